/// @file geotemplate.h
/// Cross-section templates: one side of a road's cross section as a chain of elements running
/// outward from the centreline, and the geometric questions asked of it.
///
/// Horizontal values are distances measured outward from the centreline (positive on either
/// side); vertical values are heights relative to the design centreline elevation. Values that
/// are not set, and outputs that cannot be computed, hold `GEO_NULL`.
#ifndef QV5_GEOTEMPLATE_H
#define QV5_GEOTEMPLATE_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/hostfw.h"

/// The kind of a template element (a 32-bit value; any other value is an unknown type, stored
/// without a record and ignored by the chain).
enum geotemp_ElementType : int {
    geotemp_Step = 0,       ///< advances by (DeltaH, DeltaV); no running surface (a face or gap)
    geotemp_GradeWidth = 1, ///< advances by Width and Width * tan(Angle); a running surface
    geotemp_DeltaHV = 2,    ///< advances by (DeltaH, DeltaV); a running surface
    geotemp_Feature = 3,    ///< a named marker at the current chain position; does not advance
    geotemp_FixedPoint = 4, ///< a curb feature at an absolute (H, V); does not move the chain
    geotemp_SideSlope = 5,  ///< the side slope from the shoulder; meaningful only as the last
    geotemp_None = 6        ///< returned where there is no element
};

// The element records are stored byte for byte in the road file: packed, little-endian, with
// fixed sizes.
#pragma pack(push, 1)

/// Record of a `geotemp_Step` (16 bytes).
struct geotemp_StepData {
    double DeltaH; ///< horizontal extent, metres outward
    double DeltaV; ///< vertical extent, metres, positive up
};

/// Record of a `geotemp_GradeWidth` (16 bytes).
struct geotemp_GradeWidthData {
    double Angle; ///< slope angle, radians, positive rising outward
    double Width; ///< horizontal width, metres
};

/// Record of a `geotemp_DeltaHV` (16 bytes).
struct geotemp_DeltaHVData {
    double DeltaH; ///< horizontal extent, metres outward
    double DeltaV; ///< vertical extent, metres, positive up
};

/// Record of a `geotemp_Feature` (82 bytes; the doubles are unaligned at bytes 66 and 74).
struct geotemp_FeatureData {
    unsigned short Name[33]; ///< UTF-16, zero-terminated: at most 32 characters
    double ValueA;           ///< the application's value; stored, copied and interpolated
    double ValueB;           ///< the application's value; stored, copied and interpolated
};

/// Record of a `geotemp_FixedPoint`, a curb feature (40 bytes).
struct geotemp_FixedPointData {
    double H;                   ///< absolute horizontal offset from the centreline, metres
    double V;                   ///< absolute height relative to the centreline, metres
    double Angle;               ///< radians
    unsigned char Reserved[16]; ///< copied with the record, otherwise unused
};

/// Record of a `geotemp_SideSlope` (24 bytes).
struct geotemp_SideSlopeData {
    double CutAngle;   ///< radians; the cut slope rises outward from the end of the ditch
    double FillAngle;  ///< radians; the fill slope falls outward from the shoulder
    double DitchWidth; ///< metres; flat ditch between shoulder and foot of the cut slope
};

#pragma pack(pop)

static_assert(sizeof(geotemp_StepData) == 16, "step record is 16 bytes");
static_assert(sizeof(geotemp_GradeWidthData) == 16, "grade/width record is 16 bytes");
static_assert(sizeof(geotemp_DeltaHVData) == 16, "delta H/V record is 16 bytes");
static_assert(sizeof(geotemp_FeatureData) == 82, "feature record is 82 bytes");
static_assert(sizeof(geotemp_FixedPointData) == 40, "fixed point record is 40 bytes");
static_assert(sizeof(geotemp_SideSlopeData) == 24, "side slope record is 24 bytes");
static_assert(sizeof(geotemp_ElementType) == 4, "element types are 32-bit");

/// One side of a road's cross section: a chain of elements from the centreline (offset 0,
/// height 0) outward.
///
/// Each element is a type plus a fixed-size record. From the records the template derives, for
/// every element, its start and end point in the section and its slope, and keeps the end of
/// the chain as the shoulder. Adding or setting an element derives the whole chain again;
/// deleting one does not (the following elements keep their old positions until the next add,
/// set or assignment).
///
/// Indexes out of range (negative ones included) give 0, `geotemp_None` or `GEO_NULL` and
/// change nothing.
class QV5_API CGeoTemplate {
public:
    /// An empty template with an empty name.
    CGeoTemplate();
    /// Builds a copy the way assignment does: every element added again, the name copied.
    CGeoTemplate(const CGeoTemplate& other);
    virtual ~CGeoTemplate();

    /// Resets, adds every element of `other` with its type and record in order (so the chain is
    /// derived again) and copies the name. Assigning a template to itself changes nothing.
    void operator=(const CGeoTemplate& other);

    /// Removes every element and sets the shoulder to (0, 0). The name is kept.
    void Reset();

    /// Sets the template's name.
    void SetName(CString name);
    /// The template's name.
    const CString& Name() const;

    /// Number of elements.
    int NumberElements() const;
    /// Type of element n; `geotemp_None` when there is no element n.
    geotemp_ElementType NthElementType(int n) const;

    /// Appends an element and derives the chain again.
    /// @param type the element's type; for types 0 to 5 `record` points to a record of that
    ///        type, copied; any other type is stored without a record
    /// @param record the record (a null record for a known type is stored as zeros)
    /// @return 1; 0 when memory runs out (the template is then unchanged)
    int AddElement(geotemp_ElementType type, const void* record);
    /// Replaces element n (it may change type) and derives the chain again.
    /// @return 1; 0 when there is no element n
    int SetNthElement(int n, geotemp_ElementType type, const void* record);
    /// Reads element n, which must be of type `type`.
    /// @param[out] startH,startV start point of the element in the section, metres
    /// @param[out] deltaH,deltaV end minus start, metres
    /// @param[out] angle slope angle, radians; `GEO_NULL` for steps, features, side slopes and
    ///             a vertical delta H/V
    /// @param[out] record when not null, receives a copy of the record (its type's size)
    /// @return 1; 0, leaving every output untouched, when there is no element n or it is not of
    ///         type `type`
    int GetNthElement(int n, geotemp_ElementType type, double& startH, double& startV,
                      double& deltaH, double& deltaV, double& angle, void* record = nullptr) const;
    /// Removes element n and moves the following ones down. The chain is not derived again.
    /// @return 1; 0 when there is no element n
    int DeleteNthElement(int n);
    /// Proposes the element a user would most likely add next.
    /// @param[out] type the proposed type (`geotemp_None` after a side slope)
    /// @param[out] a the outward position where it would start (`GEO_NULL` with no proposal)
    /// @param[out] b,c,d always `GEO_NULL`
    void NextLikelyElement(geotemp_ElementType& type, double& a, double& b, double& c,
                           double& d) const;

    /// 1 when both templates have the same element types index by index and equal feature
    /// names ignoring case; no numeric value is compared. 0 otherwise, and for a null `other`.
    int Similar(const CGeoTemplate* other) const;
    /// Name of element n when it is a feature.
    /// @return 1; 0 (name untouched) when element n is not a feature
    int GetFeatureAtIndex(int n, CString& name) const;
    /// Position of feature or fixed point n: (0, 0) for n = -1; `GEO_NULL` for anything that is
    /// not a feature or a fixed point.
    void FeatureOffsets(int n, double& h, double& v) const;
    /// Position of the first feature whose name equals `name` ignoring case; `GEO_NULL` when
    /// none does. Fixed points are not searched by name.
    void FeatureOffsets(const CString& name, double& h, double& v) const;

    /// Horizontal position of the end of the chain (the shoulder), metres.
    double HOffsetShoulder() const;
    /// Height of the end of the chain (the shoulder), metres.
    double VOffsetShoulder() const;

    /// Height of a point above the template surface.
    /// @param offset outward distance of the point (not made absolute: 0 or less is decided by
    ///        the first step or surface element)
    /// @param height height of the point relative to the centreline
    /// @param[out] deltaV height above the surface element at `offset` (negative below);
    ///             `GEO_NULL` when the offset faces a step, lies beyond the surface or there are
    ///             no elements. An offset exactly at an element's end belongs to that element.
    /// @param[out] angle that element's slope angle, or `GEO_NULL`
    void TemplateDeltas(double offset, double height, double& deltaV, double& angle) const;
    /// 1 when the template ends in a side slope and |offset| is strictly beyond the shoulder.
    int OnSideSlope(double offset) const;
    /// How a point beyond the shoulder stands against the cut (`cut` nonzero) or fill slope.
    /// @param[out] inDitch 1 when in cut the point lies within the ditch, else 0
    /// @param[out] deltaV height of the point above the slope line; `GEO_NULL` in the ditch or
    ///             off the slope
    /// @param[out] slopeAngle CutAngle or FillAngle; untouched when the point is not on the slope
    /// @param[out] pointAngle angle of the line from the slope's start to the point, radians
    /// @param[out] catchOffset offset at which the slope line reaches the point's height
    void SlopeDeltas(double offset, double height, int cut, int& inDitch, double& deltaV,
                     double& slopeAngle, double& pointAngle, double& catchOffset) const;
    /// Blends this template toward `other` into `result`: every field a + (b - a) * ratio, the
    /// ratio not clamped, angles blended (not their tangents), names and element types taken
    /// from this template, fixed points' reserved bytes zero. `result` is reset (its name kept)
    /// and its chain derived. The templates should be `Similar`; where `other` has no element
    /// of the same type at an index, this template's element is taken unblended. `result` may
    /// be this template or `other`. Nothing happens when `result` is null.
    void Interpolate(const CGeoTemplate* other, double ratio, CGeoTemplate* result) const;

protected:
    /// Derives every element's start, end, angle and slope, and the shoulder, from the records.
    void UpdateAllElements();

private:
    struct Chain; // the element entries; defined inside the library

    CString m_name;
    Chain* m_chain;
    double m_hOffsetShoulder;
    double m_vOffsetShoulder;
};

#endif // QV5_GEOTEMPLATE_H
