// The 4 x 4 matrix functions and the view that applies them.
#include <cmath>
#include <cstring>
#include <utility>

#include "core/guarded.h"
#include "core/rounding.h"
#include "tarvex/view.h"

namespace tarvex {

namespace {

/// What elimination works on: a matrix and, to its right, the identity that becomes its inverse.
using Augmented = double[4][8];

/// Clears the part of the left half below the diagonal, one column after the other. The pivot is the
/// largest entry on or below the diagonal, the uppermost of equal ones.
void Triangulate(Augmented& a) {
    for (int c = 0; c < 4; ++c) {
        int pivot = c;
        for (int r = c + 1; r < 4; ++r) {
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
        }
        if (pivot != c) {
            for (int k = c; k < 8; ++k) std::swap(a[c][k], a[pivot][k]);
        }
        const double divisor = GuardedDivisor(a[c][c]);
        for (int r = c + 1; r < 4; ++r) {
            for (int k = 7; k >= c; --k) a[r][k] -= a[c][k] * a[r][c] / divisor;
        }
    }
}

/// Multiplies `m` from the left, in place, by the turn about one axis.
void TurnFirst(int axis, double angle, double (*const m)[4]) {
    double turn[4][4];
    Rotate3D(axis, angle, turn);
    MultMat(turn, m, m);
}

}  // namespace

void ZeroVec(double* const v) {
    v[0] = v[1] = v[2] = 0;
    v[3] = 1;
}

void ZeroMat(double (*const m)[4]) {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) m[i][j] = 0;
    }
}

void UnityMat(double (*const m)[4]) {
    ZeroMat(m);
    for (int i = 0; i < 4; ++i) m[i][i] = 1;
}

void CopyMat(const double (*const src)[4], double (*const dst)[4]) {
    std::memmove(dst, src, sizeof(double[4][4]));
}

void MultMat(const double (*const a)[4], const double (*const b)[4], double (*const out)[4]) {
    double product[4][4];
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            double sum = 0;
            for (int k = 0; k < 4; ++k) sum += a[i][k] * b[k][j];
            product[i][j] = sum;
        }
    }
    CopyMat(product, out);
}

void Translate3D(double tx, double ty, double tz, double (*const m)[4]) {
    UnityMat(m);
    m[3][0] = -tx;
    m[3][1] = -ty;
    m[3][2] = -tz;
}

void Scale3D(double sx, double sy, double sz, double (*const m)[4]) {
    ZeroMat(m);
    m[0][0] = sx;
    m[1][1] = sy;
    m[2][2] = sz;
    m[3][3] = 1;
}

void Rotate3D(int axis, double a, double (*const m)[4]) {
    UnityMat(m);
    if (axis < 1 || axis > 3) return;
    const int i = axis % 3;
    const int j = (i + 1) % 3;
    m[i][i] = m[j][j] = std::cos(a);
    m[i][j] = std::sin(a);
    m[j][i] = -m[i][j];
}

void Rotate3D(double ax, double ay, double az, double (*const m)[4]) {
    UnityMat(m);
    if (std::fabs(ax) >= GEOMETRY_EPSILON) TurnFirst(1, ax, m);
    if (std::fabs(ay) >= GEOMETRY_EPSILON) TurnFirst(2, ay, m);
    if (std::fabs(az) >= GEOMETRY_EPSILON) TurnFirst(3, az, m);
}

void PrepareMat3D(double tx, double ty, double tz, double sx, double sy, double sz, double ax, double ay,
                  double az, double (*const m)[4]) {
    Scale3D(sx, sy, sz, m);
    TurnFirst(1, ax, m);
    TurnFirst(2, ay, m);
    TurnFirst(3, az, m);
    double shift[4][4];
    Translate3D(tx, ty, tz, shift);
    MultMat(shift, m, m);
}

void PrepareInvMat3D(double tx, double ty, double tz, double sx, double sy, double sz, double ax, double ay,
                     double az, double (*const m)[4]) {
    PrepareMat3D(tx, ty, tz, sx, sy, sz, ax, ay, az, m);
    InvMat(m, m);
}

void Transform3D(const double* const in, const double (*const m)[4], double* const out) {
    double image[3];
    for (int j = 0; j < 3; ++j) {
        double sum = 0;
        for (int k = 0; k < 4; ++k) sum += in[k] * m[k][j];
        image[j] = sum;
    }
    std::memcpy(out, image, sizeof image);
    out[3] = 1;
}

void InvMat(const double (*const m)[4], double (*const inv)[4]) {
    Augmented a{};
    for (int r = 0; r < 4; ++r) {
        std::memcpy(a[r], m[r], sizeof(double[4]));
        a[r][4 + r] = 1;
    }
    Triangulate(a);
    for (int column = 0; column < 4; ++column) {
        for (int r = 3; r >= 0; --r) {
            double known = 0;
            for (int k = r + 1; k < 4; ++k) known += a[r][k] * inv[k][column];
            inv[r][column] = (a[r][4 + column] - known) / GuardedDivisor(a[r][r]);
        }
    }
}

// ---------------------------------------------------------------------------------------------

CView3D::CView3D() { Reset(); }

CView3D::CView3D(const CView3D& other) : CView3D() { *this = other; }

CView3D& CView3D::operator=(const CView3D& other) {
    SetMat(other.m_mat);
    return *this;
}

CView3D& CView3D::operator*=(const CView3D& other) {
    Matrix product;
    MultMat(m_mat, other.m_mat, product);
    SetMat(product);
    return *this;
}

void CView3D::Reset() {
    ZeroVec(m_vector);
    UnityMat(m_mat);
    UnityMat(m_imat);
    m_inverseValid = true;
}

void CView3D::SetMat(const double (&m)[4][4]) {
    CopyMat(m, m_mat);
    m_inverseValid = false;
}

void CView3D::Precede(const Matrix& first) {
    MultMat(first, m_mat, m_mat);
    m_inverseValid = false;
}

void CView3D::Translate(double tx, double ty, double tz) {
    Matrix m;
    Translate3D(tx, ty, tz, m);
    Precede(m);
}

void CView3D::Scale(double sx, double sy, double sz) {
    Matrix m;
    Scale3D(sx, sy, sz, m);
    Precede(m);
}

void CView3D::Rotate(double a) {
    Matrix m;
    Rotate3D(3, a, m);
    Precede(m);
}

void CView3D::Rotate(double ax, double ay, double az) {
    Matrix m;
    Rotate3D(ax, ay, az, m);
    Precede(m);
}

void CView3D::Transfer(double x, double y, double z) {
    const Vector point = {x, y, z, 1};
    Transform3D(point, m_mat, m_vector);
}

void CView3D::Return(double x, double y, double z) {
    const Vector point = {x, y, z, 1};
    Transform3D(point, imat(), m_vector);
}

tagPOINT CView3D::point() const { return {RoundToInt(x()), RoundToInt(y())}; }

CView3D::Matrix& CView3D::imat() {
    if (!m_inverseValid) InvMat(m_mat, m_imat);
    m_inverseValid = true;
    return m_imat;
}

}  // namespace tarvex
