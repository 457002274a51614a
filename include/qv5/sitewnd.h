/// @file sitewnd.h
/// `CSiteWnd`: the mapping of site coordinates to the pixels of the host's site plan window.
#ifndef QV5_SITEWND_H
#define QV5_SITEWND_H

#include "qv5/export.h"

/// The view of a site plan: which world point is at the window's centre, how the view is turned
/// and scaled, and the window's size; with a world locale subtracted from coordinates before
/// drawing so that large grid coordinates keep their precision.
///
/// World x is east and y north; pixel columns grow to the right and rows downward. A new view is
/// centred on (0, 0), unrotated, at one pixel per world unit, in a window of 0 × 0 pixels, with a
/// world locale of (0, 0, 0).
class QV5_API CSiteWnd {
public:
    CSiteWnd();
    CSiteWnd(const CSiteWnd& other);
    CSiteWnd& operator=(const CSiteWnd& other);
    virtual ~CSiteWnd();

    /// Sets the world locale, the origin subtracted by WorldLimitedX/Y/Z.
    void SetWorldLocale(double x0, double y0, double z0);
    /// Reads the world locale.
    void GetWorldLocale(double& x0, double& y0, double& z0);

    /// The pixel of a world point.
    /// @param[out] px,py column and row, written in every case (saturating at the limits of int)
    /// @return 1 when 0 <= px <= width and 0 <= py <= height (the edges count as inside), else 0
    int WorldToWindow(double x, double y, int& px, int& py);

    /// @name The view (set by the host)
    /// @{
    /// The world point shown at the window's centre.
    void SetViewCentre(double cx, double cy);
    void GetViewCentre(double& cx, double& cy) const;
    /// Turns the view by `radians` (0: north up); its cosine and sine are kept with it.
    void SetRotation(double radians);
    double Rotation() const;
    /// Pixels per world unit.
    void SetScale(double pixelsPerUnit);
    double Scale() const;
    /// The window's size in pixels.
    void SetWindowSize(int width, int height);
    void GetWindowSize(int& width, int& height) const;
    /// @}

protected:
    /// x − x0.
    double WorldLimitedX(double x);
    /// y − y0.
    double WorldLimitedY(double y);
    /// z − z0.
    double WorldLimitedZ(double z);

    /// Sort comparison (qsort style) for the host's sorted arrays: each argument points to a
    /// pointer to a record whose first field is an unsigned 32-bit key.
    /// @return 1 when a's key is greater, -1 when smaller, 0 when equal; a null record sorts
    ///         before any other
    static int compare(const void* a, const void* b);

private:
    double m_centreX;
    double m_centreY;
    double m_rotation;
    double m_cos;
    double m_sin;
    double m_localeX;
    double m_localeY;
    double m_localeZ;
    double m_scale;
    int m_width;
    int m_height;
};

#endif // QV5_SITEWND_H
