// The element entries of a CGeoTemplate, for the template's own sources (the class, its
// geometry and its drawing). Internal header; never installed.
#ifndef QV5_SECTION_TEMPLATE_CHAIN_H
#define QV5_SECTION_TEMPLATE_CHAIN_H

#include "qv5/geotemplate.h"
#include "section/template_math.h"

#include <vector>

/// The elements in chain order, each with its record and derived place in the section.
struct CGeoTemplate::Chain {
    std::vector<qv5::detail::ChainEntry> entries;
};

#endif // QV5_SECTION_TEMPLATE_CHAIN_H
