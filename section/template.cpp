// The cross-section template: its element list and the chain derived from it.
#include "qv5/geotemplate.h"

#include "section/template_chain.h"
#include "section/template_math.h"

#include <cstring>
#include <new>

using qv5::detail::ChainEntry;

namespace {

/// The entry at index n, or null when there is none (negative indexes included).
template <typename Entries>
auto entry_at(Entries& entries, int n) -> decltype(&entries[0]) {
    if (n < 0 || static_cast<std::size_t>(n) >= entries.size()) {
        return nullptr;
    }
    return &entries[static_cast<std::size_t>(n)];
}

} // namespace

CGeoTemplate::CGeoTemplate() : m_chain(new Chain), m_hOffsetShoulder(0.0), m_vOffsetShoulder(0.0) {
    Reset();
}

CGeoTemplate::CGeoTemplate(const CGeoTemplate& other) : CGeoTemplate() {
    *this = other;
}

CGeoTemplate::~CGeoTemplate() {
    delete m_chain;
}

void CGeoTemplate::operator=(const CGeoTemplate& other) {
    if (this == &other) {
        return;
    }
    Reset();
    // Every element is added again from its type and record, so the copy's chain is derived
    // afresh (a source that deleted an element without re-deriving passes on its records, not
    // its stale positions). Adding them all before one derivation gives the same chain as
    // adding them one by one.
    try {
        m_chain->entries.reserve(other.m_chain->entries.size());
        for (const ChainEntry& e : other.m_chain->entries) {
            m_chain->entries.push_back(qv5::detail::make_entry(e.type, e.record.bytes));
        }
    } catch (const std::bad_alloc&) {
        m_chain->entries.clear();
    }
    UpdateAllElements();
    m_name = other.m_name;
}

void CGeoTemplate::Reset() {
    m_chain->entries.clear();
    m_chain->entries.shrink_to_fit();
    m_hOffsetShoulder = 0.0;
    m_vOffsetShoulder = 0.0;
}

void CGeoTemplate::SetName(CString name) {
    m_name = std::move(name);
}

const CString& CGeoTemplate::Name() const {
    return m_name;
}

int CGeoTemplate::NumberElements() const {
    return static_cast<int>(m_chain->entries.size());
}

geotemp_ElementType CGeoTemplate::NthElementType(int n) const {
    const ChainEntry* e = entry_at(m_chain->entries, n);
    return e != nullptr ? e->type : geotemp_None;
}

int CGeoTemplate::AddElement(geotemp_ElementType type, const void* record) {
    try {
        m_chain->entries.push_back(qv5::detail::make_entry(type, record));
    } catch (const std::bad_alloc&) {
        return 0;
    }
    UpdateAllElements();
    return 1;
}

int CGeoTemplate::SetNthElement(int n, geotemp_ElementType type, const void* record) {
    ChainEntry* e = entry_at(m_chain->entries, n);
    if (e == nullptr) {
        return 0;
    }
    *e = qv5::detail::make_entry(type, record);
    UpdateAllElements();
    return 1;
}

int CGeoTemplate::GetNthElement(int n, geotemp_ElementType type, double& startH, double& startV,
                                double& deltaH, double& deltaV, double& angle, void* record) const {
    const ChainEntry* e = entry_at(m_chain->entries, n);
    // The caller names the type it expects, so that the record it passes is large enough.
    if (e == nullptr || e->type != type) {
        return 0;
    }
    if (record != nullptr) {
        std::memcpy(record, e->record.bytes, qv5::detail::record_size(type));
    }
    startH = e->start_h;
    startV = e->start_v;
    deltaH = e->end_h - e->start_h;
    deltaV = e->end_v - e->start_v;
    angle = e->angle;
    return 1;
}

int CGeoTemplate::DeleteNthElement(int n) {
    ChainEntry* e = entry_at(m_chain->entries, n);
    if (e == nullptr) {
        return 0;
    }
    // The chain is deliberately not derived again: hosts that delete and then read positions
    // have always seen the old chain until their next add or set.
    m_chain->entries.erase(m_chain->entries.begin() + n);
    return 1;
}

void CGeoTemplate::NextLikelyElement(geotemp_ElementType& type, double& a, double& b, double& c,
                                     double& d) const {
    b = c = d = GEO_NULL;
    if (m_chain->entries.empty()) {
        type = geotemp_GradeWidth;
        a = 0.0;
        return;
    }
    const ChainEntry& last = m_chain->entries.back();
    switch (last.type) {
    case geotemp_Step:
        type = geotemp_GradeWidth;
        a = last.start_h + last.record.step.DeltaH;
        break;
    case geotemp_GradeWidth:
        type = geotemp_GradeWidth;
        a = last.start_h + last.record.grade_width.Width;
        break;
    case geotemp_DeltaHV:
        type = geotemp_DeltaHV;
        a = last.start_h + last.record.delta_hv.DeltaH;
        break;
    case geotemp_Feature:
    case geotemp_FixedPoint:
        type = geotemp_GradeWidth;
        a = last.start_h;
        break;
    default:
        // A side slope ends the chain: nothing sensible follows it.
        type = geotemp_None;
        a = GEO_NULL;
        break;
    }
}

int CGeoTemplate::Similar(const CGeoTemplate* other) const {
    if (other == nullptr) {
        return 0;
    }
    const auto& mine = m_chain->entries;
    const auto& theirs = other->m_chain->entries;
    if (mine.size() != theirs.size()) {
        return 0;
    }
    for (std::size_t i = 0; i < mine.size(); ++i) {
        if (mine[i].type != theirs[i].type) {
            return 0;
        }
        if (mine[i].type == geotemp_Feature &&
            qv5::detail::feature_name(mine[i].record.feature)
                    .CompareNoCase(qv5::detail::feature_name(theirs[i].record.feature)) != 0) {
            return 0;
        }
    }
    return 1;
}

int CGeoTemplate::GetFeatureAtIndex(int n, CString& name) const {
    const ChainEntry* e = entry_at(m_chain->entries, n);
    if (e == nullptr || e->type != geotemp_Feature) {
        return 0;
    }
    name = qv5::detail::feature_name(e->record.feature);
    return 1;
}

void CGeoTemplate::FeatureOffsets(int n, double& h, double& v) const {
    // Index -1 stands for the centreline.
    if (n == -1) {
        h = v = 0.0;
        return;
    }
    h = v = GEO_NULL;
    const ChainEntry* e = entry_at(m_chain->entries, n);
    if (e != nullptr && (e->type == geotemp_Feature || e->type == geotemp_FixedPoint)) {
        h = e->start_h;
        v = e->start_v;
    }
}

void CGeoTemplate::FeatureOffsets(const CString& name, double& h, double& v) const {
    h = v = GEO_NULL;
    for (const ChainEntry& e : m_chain->entries) {
        if (e.type == geotemp_Feature &&
            qv5::detail::feature_name(e.record.feature).CompareNoCase(name) == 0) {
            h = e.start_h;
            v = e.start_v;
            return;
        }
    }
}

double CGeoTemplate::HOffsetShoulder() const {
    return m_hOffsetShoulder;
}

double CGeoTemplate::VOffsetShoulder() const {
    return m_vOffsetShoulder;
}

void CGeoTemplate::UpdateAllElements() {
    const qv5::detail::ChainEnd end =
        qv5::detail::derive_chain(m_chain->entries.data(), m_chain->entries.size());
    m_hOffsetShoulder = end.h;
    m_vOffsetShoulder = end.v;
}
