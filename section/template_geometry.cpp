// The geometric questions asked of a template: height above its surface, the side slope, and
// the blend of two templates.
#include "qv5/geotemplate.h"

#include "section/template_chain.h"
#include "section/template_math.h"

#include <new>
#include <vector>

using qv5::detail::ChainEntry;

void CGeoTemplate::TemplateDeltas(double offset, double height, double& deltaV,
                                  double& angle) const {
    const qv5::detail::SurfaceDeltas d = qv5::detail::surface_deltas(
        m_chain->entries.data(), m_chain->entries.size(), offset, height);
    deltaV = d.delta_v;
    angle = d.angle;
}

int CGeoTemplate::OnSideSlope(double offset) const {
    return qv5::detail::on_side_slope(m_chain->entries.data(), m_chain->entries.size(),
                                      m_hOffsetShoulder, offset)
               ? 1
               : 0;
}

void CGeoTemplate::SlopeDeltas(double offset, double height, int cut, int& inDitch, double& deltaV,
                               double& slopeAngle, double& pointAngle, double& catchOffset) const {
    deltaV = pointAngle = catchOffset = GEO_NULL;
    inDitch = 0;
    if (OnSideSlope(offset) == 0) {
        return; // slopeAngle is left as the caller had it
    }
    const qv5::detail::SlopeCatch c = qv5::detail::slope_catch(
        m_chain->entries.back().record.side_slope,
        qv5::detail::ChainEnd{m_hOffsetShoulder, m_vOffsetShoulder}, offset, height, cut != 0);
    inDitch = c.in_ditch;
    deltaV = c.delta_v;
    slopeAngle = c.slope_angle;
    pointAngle = c.point_angle;
    catchOffset = c.catch_offset;
}

void CGeoTemplate::Interpolate(const CGeoTemplate* other, double ratio,
                               CGeoTemplate* result) const {
    if (result == nullptr) {
        return;
    }
    // The blended entries are built before the result is reset, so that the result may be
    // either input.
    std::vector<ChainEntry> blended;
    try {
        const auto& mine = m_chain->entries;
        blended.reserve(mine.size());
        for (std::size_t i = 0; i < mine.size(); ++i) {
            const geotemp_ElementType t = mine[i].type;
            if (t < geotemp_Step || t > geotemp_SideSlope) {
                continue;
            }
            // The other template is read at the same index as the same type; where it has no
            // such element (a dissimilar pair) this template's element stands unblended.
            const ChainEntry* theirs = nullptr;
            if (other != nullptr && i < other->m_chain->entries.size() &&
                other->m_chain->entries[i].type == t) {
                theirs = &other->m_chain->entries[i];
            }
            const qv5::detail::TemplateRecord r = qv5::detail::blend_record(
                t, mine[i].record, theirs != nullptr ? theirs->record : mine[i].record, ratio);
            blended.push_back(qv5::detail::make_entry(t, r.bytes));
        }
    } catch (const std::bad_alloc&) {
        blended.clear();
    }
    result->Reset();
    result->m_chain->entries.swap(blended);
    result->UpdateAllElements();
}
