// The picture of one template side, for the host's template editor.
//
// The picture is drawn off screen into a bitmap the template owns, compatible with the host's
// screen context and selected into its memory context, which the host then copies to the screen.
// Horizontal and vertical metres share one scale, chosen so that the extents with a fifth more
// room fill the height (when the section is taller than the rectangle in proportion) or the
// width less the 10-pixel left margin; height 0 sits at the row that centres the vertical range.
// Every position is truncated to whole pixels with the same mapping, so that a shape's pixels
// can be computed by hand from the template.
#include "qv5/geotemplate.h"

#include "section/template_chain.h"
#include "section/template_draw.h"

#include <algorithm>
#include <cmath>

namespace qv5::detail {

namespace {

/// The side slope's record when it ends the chain, else null.
const geotemp_SideSlopeData* final_side_slope(const ChainEntry* entries, std::size_t count) {
    if (count == 0 || entries[count - 1].type != geotemp_SideSlope) {
        return nullptr;
    }
    return &entries[count - 1].record.side_slope;
}

} // namespace

picture_extents section_extents(const ChainEntry* entries, std::size_t count, double h_shoulder,
                                double v_shoulder) {
    picture_extents extents{h_shoulder, 0.0, 0.0, 0.0};
    const geotemp_SideSlopeData* slope = final_side_slope(entries, count);
    if (slope != nullptr) {
        const double reach = h_shoulder + slope->DitchWidth;
        extents.h = reach * kPictureRoom;
        extents.slope_length = std::fabs(reach) * kSlopeGlyphFraction;
    }
    // The running height is the sum of the elements' rises, as the chain walks outward; curbs
    // and features do not move it.
    double running = 0.0;
    const std::size_t chain = slope != nullptr ? count - 1 : count;
    for (std::size_t i = 0; i < chain; ++i) {
        running += entries[i].end_v - entries[i].start_v;
        extents.v_min = std::min(extents.v_min, running);
        extents.v_max = std::max(extents.v_max, running);
    }
    if (slope != nullptr) {
        // The cut line rises from the end of the ditch and the fill line falls from the
        // shoulder; their vertical reach must fit in the picture.
        const double cut_rise = std::sin(slope->CutAngle) * extents.slope_length;
        const double fill_fall = std::sin(slope->FillAngle) * extents.slope_length;
        extents.v_max = std::max({extents.v_max, v_shoulder + cut_rise, v_shoulder - fill_fall});
        extents.v_min = std::min({extents.v_min, v_shoulder + cut_rise, v_shoulder - fill_fall});
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (entries[i].type != geotemp_FixedPoint) {
            continue;
        }
        const geotemp_FixedPointData& curb = entries[i].record.fixed_point;
        extents.h = std::max(extents.h, curb.H + kCurbRoom);
        extents.v_min = std::min(extents.v_min, curb.V - kCurbDepth);
        extents.v_max = std::max(extents.v_max, curb.V);
    }
    return extents;
}

long long pixel_part(double value) {
    if (std::isnan(value) || value <= -static_cast<double>(kFarPixel)) {
        return -kFarPixel;
    }
    if (value >= static_cast<double>(kFarPixel)) {
        return kFarPixel;
    }
    return static_cast<long long>(value); // truncation toward zero
}

picture_scale section_scale(const picture_extents& extents, int width, int height) {
    picture_scale result{};
    const double range = extents.v_max - extents.v_min;
    const double aspect = static_cast<double>(height) / static_cast<double>(width);
    result.height_bound = std::fabs(range) >= kFlatRange && !(aspect > range / extents.h);
    if (result.height_bound) {
        result.scale = (height - 10) / (range * kPictureRoom);
    } else {
        result.scale = (width - 10) / (extents.h * kPictureRoom);
    }
    const double centre = (range * 0.5 + extents.v_min) * result.scale;
    result.drawable = std::isfinite(result.scale) && std::isfinite(centre);
    if (result.drawable) {
        result.y0 =
            static_cast<int>(std::clamp(pixel_part(centre) + height / 2, -kFarPixel, kFarPixel));
    }
    return result;
}

POINT section_pixel(const picture_scale& scale, double h, double v) {
    const long long x = pixel_part(h * scale.scale) + kPictureMargin;
    const long long y = scale.y0 - pixel_part(v * scale.scale);
    return {static_cast<int>(std::clamp(x, -kFarPixel, kFarPixel)),
            static_cast<int>(std::clamp(y, -kFarPixel, kFarPixel))};
}

section_picture plan_section(const ChainEntry* entries, std::size_t count, double h_shoulder,
                             double v_shoulder, int width, int height) {
    section_picture picture;
    const picture_extents extents = section_extents(entries, count, h_shoulder, v_shoulder);
    picture.scale = section_scale(extents, width, height);
    if (!picture.scale.drawable) {
        return picture;
    }
    const picture_scale& s = picture.scale;

    // Curbs: a kerb profile hanging from its anchor, its corners whole pixels from the anchor.
    const int top = static_cast<int>(pixel_part(kCurbTop * s.scale));
    const int back = static_cast<int>(pixel_part(kCurbBack * s.scale));
    const int base = static_cast<int>(pixel_part(kCurbBase * s.scale));
    for (std::size_t i = 0; i < count; ++i) {
        if (entries[i].type != geotemp_FixedPoint) {
            continue;
        }
        const POINT a =
            section_pixel(s, entries[i].record.fixed_point.H, entries[i].record.fixed_point.V);
        picture.curbs.push_back({POINT{a.x, a.y}, POINT{a.x + top, a.y},
                                 POINT{a.x + back, a.y + top}, POINT{a.x + back, a.y + top + back},
                                 POINT{a.x + back - base, a.y + top + back},
                                 POINT{a.x + back - base, a.y + top}, POINT{a.x, a.y + top}});
    }

    // Surface: from the centreline through the end of every running surface; a step carries
    // no surface of its own, so it moves the last point to its end instead of adding one.
    picture.surface.push_back({kPictureMargin, s.y0});
    for (std::size_t i = 0; i < count; ++i) {
        const ChainEntry& e = entries[i];
        if (e.type == geotemp_GradeWidth || e.type == geotemp_DeltaHV) {
            picture.surface.push_back(section_pixel(s, e.end_h, e.end_v));
        } else if (e.type == geotemp_Step) {
            picture.surface.back() = section_pixel(s, e.end_h, e.end_v);
        }
    }

    if (const geotemp_SideSlopeData* slope = final_side_slope(entries, count)) {
        picture.side_slope = true;
        picture.ditch = slope->DitchWidth > 0.0;
        const double ditch_h = h_shoulder + (picture.ditch ? slope->DitchWidth : 0.0);
        const double length = extents.slope_length;
        picture.shoulder = section_pixel(s, h_shoulder, v_shoulder);
        picture.ditch_end = section_pixel(s, ditch_h, v_shoulder);
        picture.cut_end = section_pixel(s, ditch_h + std::cos(slope->CutAngle) * length,
                                        v_shoulder + std::sin(slope->CutAngle) * length);
        picture.fill_end = section_pixel(s, h_shoulder + std::cos(slope->FillAngle) * length,
                                         v_shoulder - std::sin(slope->FillAngle) * length);
    }

    for (std::size_t i = 0; i < count; ++i) {
        const ChainEntry& e = entries[i];
        if (e.type == geotemp_Feature) {
            picture.features.push_back(
                {section_pixel(s, e.start_h, e.start_v),
                 CString::FromUtf16(e.record.feature.Name, sizeof e.record.feature.Name /
                                                               sizeof e.record.feature.Name[0])});
        }
    }
    return picture;
}

} // namespace qv5::detail

void CGeoTemplate::DrawSection(CRect& rect, CDC* screenDC, CDC* memoryDC) {
    if (screenDC == nullptr || memoryDC == nullptr) {
        return;
    }
    const int width = rect.Width();
    const int height = rect.Height();

    // The template's bitmap of the previous call is put back out of the context and deleted.
    if (m_pOldBitmap != nullptr) {
        memoryDC->SelectObject(m_pOldBitmap);
        m_bitmap.DeleteObject();
        m_pOldBitmap = nullptr;
    }
    if (!m_bitmap.CreateCompatibleBitmap(screenDC, width, height)) {
        return; // an empty or oversized rectangle: nothing to draw into
    }
    m_pOldBitmap = memoryDC->SelectObject(&m_bitmap);
    if (m_pOldBitmap == nullptr) {
        m_bitmap.DeleteObject(); // not a memory context
        return;
    }
    memoryDC->FillSolidRect(0, 0, width, height, qv5::detail::kPictureBackground);

    const std::vector<qv5::detail::ChainEntry>& entries = m_chain->entries;
    if (entries.empty()) {
        return;
    }
    const qv5::detail::section_picture picture = qv5::detail::plan_section(
        entries.data(), entries.size(), m_hOffsetShoulder, m_vOffsetShoulder, width, height);
    if (!picture.scale.drawable) {
        return;
    }

    CBrush curb_brush;
    curb_brush.CreateSolidBrush(qv5::detail::kCurbColour);
    CBrush* old_brush = memoryDC->SelectObject(&curb_brush);
    for (const auto& curb : picture.curbs) {
        memoryDC->Polygon(curb.data(), static_cast<int>(curb.size()));
    }
    memoryDC->SelectObject(old_brush);

    CPen surface_pen;
    surface_pen.CreatePen(PS_SOLID, qv5::detail::kPictureLineWidth, qv5::detail::kSurfaceColour);
    CPen* old_pen = memoryDC->SelectObject(&surface_pen);
    memoryDC->Polyline(picture.surface.data(), static_cast<int>(picture.surface.size()));
    if (picture.side_slope) {
        memoryDC->MoveTo(picture.shoulder.x, picture.shoulder.y);
        if (picture.ditch) {
            memoryDC->LineTo(picture.ditch_end.x, picture.ditch_end.y);
        }
        memoryDC->MoveTo(picture.ditch_end.x, picture.ditch_end.y);
        memoryDC->LineTo(picture.cut_end.x, picture.cut_end.y);
        memoryDC->MoveTo(picture.shoulder.x, picture.shoulder.y);
        memoryDC->LineTo(picture.fill_end.x, picture.fill_end.y);
    }

    CPen feature_pen;
    feature_pen.CreatePen(PS_SOLID, qv5::detail::kPictureLineWidth, qv5::detail::kFeatureColour);
    memoryDC->SelectObject(&feature_pen);
    memoryDC->SetBkMode(TRANSPARENT);
    for (const qv5::detail::feature_mark& mark : picture.features) {
        using qv5::detail::kCrossHalf;
        const long long x = mark.at.x;
        const long long y = mark.at.y;
        const POINT down[] = {{static_cast<int>(x - kCrossHalf), static_cast<int>(y - kCrossHalf)},
                              {static_cast<int>(x + kCrossHalf), static_cast<int>(y + kCrossHalf)}};
        const POINT up[] = {{static_cast<int>(x - kCrossHalf), static_cast<int>(y + kCrossHalf)},
                            {static_cast<int>(x + kCrossHalf), static_cast<int>(y - kCrossHalf)}};
        memoryDC->Polyline(down, 2);
        memoryDC->Polyline(up, 2);
        RECT label{static_cast<int>(x + qv5::detail::kLabelOffset),
                   static_cast<int>(y + qv5::detail::kLabelOffset),
                   static_cast<int>(x + qv5::detail::kLabelRight),
                   static_cast<int>(y + qv5::detail::kLabelBottom)};
        memoryDC->DrawText(mark.name, &label, DT_LEFT | DT_SINGLELINE | DT_NOCLIP);
    }
    // The host's pen goes back; the bitmap stays selected for the host to copy.
    memoryDC->SelectObject(old_pen);
}
