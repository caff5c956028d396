// Three-dimensional affine transforms: 4 x 4 matrices, and CView3D, which holds one and applies it.
//
// Model. A matrix is double[4][4], indexed [row][column]. Points are row vectors (x, y, z, 1) that stand
// on the left, p' = p M, so in a product A B the transform A acts first, and a translation sits in the
// last row. The fourth column is never used: there is no perspective and no division by w. Angles are
// radians; a positive one turns y towards z (axis 1), z towards x (axis 2) or x towards y (axis 3).
//
// Nothing here raises or reports an error. What cannot be computed comes out as huge, infinite or NaN.
//
//     CView3D view;
//     view.Rotate(std::numbers::pi / 2);
//     view.Transfer(1, 0, 0);  // view.x() is 0, view.y() is 1, within rounding
#pragma once

#include "tarvex/export.h"
#include "tarvex/platform.h"

namespace tarvex {

// ---------------------------------------------------------------------------------------------
// Matrices and vectors. Results may overwrite arguments.

/// v = (0, 0, 0, 1), the origin.
TARVEX_API void ZeroVec(double* const v);
/// All 16 entries 0.
TARVEX_API void ZeroMat(double (*const m)[4]);
/// The identity.
TARVEX_API void UnityMat(double (*const m)[4]);
/// dst = src.
TARVEX_API void CopyMat(const double (*const src)[4], double (*const dst)[4]);
/// out = a b: the transform a acts first.
TARVEX_API void MultMat(const double (*const a)[4], const double (*const b)[4], double (*const out)[4]);

/// Moves points by (-tx, -ty, -tz), negated on purpose: it brings (tx, ty, tz) to the origin, as a view
/// that is moved there sees it.
TARVEX_API void Translate3D(double tx, double ty, double tz, double (*const m)[4]);
/// Multiplies the coordinates by the factors.
TARVEX_API void Scale3D(double sx, double sy, double sz, double (*const m)[4]);
/// Turns by `a` about axis 1 (x), 2 (y) or 3 (z). Any other axis gives the identity.
TARVEX_API void Rotate3D(int axis, double a, double (*const m)[4]);
/// Turns about z by `az`, then about y by `ay`, then about x by `ax`. Angles smaller than
/// GEOMETRY_EPSILON are left out, so that no angle at all gives the identity exactly.
TARVEX_API void Rotate3D(double ax, double ay, double az, double (*const m)[4]);

/// Moves by (-tx, -ty, -tz), then turns about z, y and x (small angles included), then scales.
TARVEX_API void PrepareMat3D(double tx, double ty, double tz, double sx, double sy, double sz, double ax,
                             double ay, double az, double (*const m)[4]);
/// The inverse, by `InvMat`, of the matrix that `PrepareMat3D` makes of the same values.
TARVEX_API void PrepareInvMat3D(double tx, double ty, double tz, double sx, double sy, double sz, double ax,
                                double ay, double az, double (*const m)[4]);

/// out = in m for x, y and z, which use all four components of `in`; the fourth of `out` is 1.
TARVEX_API void Transform3D(const double* const in, const double (*const m)[4], double* const out);

/// The inverse, by Gaussian elimination with partial pivoting.
///
/// A pivot smaller than GEOMETRY_EPSILON is divided by as though it were that large, and one that is
/// exactly 0 gives infinities or NaN: the inverse of a singular matrix is meaningless but never an error.
TARVEX_API void InvMat(const double (*const m)[4], double (*const inv)[4]);

// ---------------------------------------------------------------------------------------------

/// A transform, its inverse, computed when first asked for, and the point transformed last.
///
/// Translate, Scale and Rotate put the new transform before what is there: the newest call acts first on
/// a point and the oldest last. One thread at a time may use a view, since `Return` and `imat` write the
/// inverse.
class TARVEX_API CView3D {
  public:
    using Vector = double[4];
    using Matrix = double[4][4];

    /// The identity, with the point at the origin.
    CView3D();
    /// Copies the transform alone: the point is at the origin.
    CView3D(const CView3D& other);
    /// Copies the transform alone: the point stays, deliberately, so that a view can change under it.
    CView3D& operator=(const CView3D& other);
    /// Lets the other transform act after this one.
    CView3D& operator*=(const CView3D& other);

    void Reset();
    void SetMat(const double (&m)[4][4]);

    /// Moves by the negated amounts; see `Translate3D`.
    void Translate(double tx, double ty, double tz);
    void Scale(double sx, double sy, double sz);
    /// Turns about the z axis, the plane's own.
    void Rotate(double a);
    /// Turns about z, then y, then x; see `Rotate3D`.
    void Rotate(double ax, double ay, double az);

    /// Transforms a point, which `x`, `y` and `z` then tell.
    void Transfer(double x, double y, double z);
    /// The same by the inverse: undoes `Transfer`.
    void Return(double x, double y, double z);

    double x() const { return m_vector[0]; }
    double y() const { return m_vector[1]; }
    double z() const { return m_vector[2]; }
    double w() const { return m_vector[3]; }
    Vector& vector() { return m_vector; }
    const Vector& vector() const { return m_vector; }
    /// The point's x and y rounded to the nearest integers, halves upwards; beyond the integers' range
    /// the nearest of them, and 0 for NaN.
    tagPOINT point() const;

    /// The transform. A view that is not const takes the call for a change of it, whether or not anything
    /// is written: the inverse is computed anew when next needed. Write at once, not through a reference
    /// kept over a `Return`.
    Matrix& mat() {
        m_inverseValid = false;
        return m_mat;
    }
    const Matrix& mat() const { return m_mat; }
    /// The inverse.
    Matrix& imat();

  private:
    /// Lets `first` act before the present transform.
    void Precede(const Matrix& first);

    Vector m_vector;
    Matrix m_mat;
    Matrix m_imat;
    bool m_inverseValid;
};

}  // namespace tarvex
