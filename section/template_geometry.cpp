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
    const auto& mine = m_chain->entries;
    const std::vector<ChainEntry>* theirs = other != nullptr ? &other->m_chain->entries : nullptr;
    // The road blends a template for every evaluated station, so a result of its own is filled
    // in place (its storage kept from one blend to the next); a result that is one of the
    // inputs is built aside first, since resetting it would lose what is read.
    std::vector<ChainEntry> aside;
    const bool aliased = result == this || result == other;
    std::vector<ChainEntry>& out = aliased ? aside : result->m_chain->entries;
    if (!aliased) {
        result->Reset();
    }
    try {
        // The other template is read at the same index as the same type; where it has no such
        // element (a dissimilar pair) this template's element stands unblended.
        qv5::detail::blend_chain(mine.data(), mine.size(),
                                 theirs != nullptr ? theirs->data() : nullptr,
                                 theirs != nullptr ? theirs->size() : 0, ratio, out);
    } catch (const std::bad_alloc&) {
        out.clear();
    }
    if (aliased) {
        result->Reset();
        result->m_chain->entries.swap(aside);
    }
    result->UpdateAllElements();
}
