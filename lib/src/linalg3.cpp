// Three-by-three linear algebra of mmutil: determinants, inverses, products and rotations.
#include <cmath>
#include <cstdint>

#include "mmutil/numeric.h"
#include "mmutil/text.h"

namespace mmutil {
namespace {

// A failed inverse ends the run as the transport utilities' fatal errors do.
constexpr int kInverseFailureStatus = 255;

// Degrees to radians: multiplied by this constant, then divided by 180. It is not the double
// nearest to pi; earlier runs used it, and rotations must reproduce them.
constexpr double kDegreePi = 3.1415926535898;

}  // namespace

double det(const double (*a)[3]) {
  double d = 0.0;
  d += a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]);
  d += a[0][1] * (a[1][2] * a[2][0] - a[1][0] * a[2][2]);
  d += a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
  return d;
}

void transpose_matrix(double (*a)[3]) {
  swap_dbl(&a[0][1], &a[1][0]);
  swap_dbl(&a[0][2], &a[2][0]);
  swap_dbl(&a[1][2], &a[2][1]);
}

void transpose_matrix(double** a, int n) {
  for (int i = 1; i < n; ++i) {
    for (int j = 0; j < i; ++j) swap_dbl(&a[i][j], &a[j][i]);
  }
}

void invert(const double (*a)[3], double (*b)[3]) {
  if (a == b) {
    fail_with_status(kInverseFailureStatus, "mmutil", __LINE__,
                     "%s - Result matrix overlaps input\n", "invert");
  }
  const double d = det(a);
  if (std::fabs(d) < 1e-30) {
    fail_with_status(kInverseFailureStatus, "mmutil", __LINE__, "Determinant of matrix is zero.\n");
  }
  const double inv = 1.0 / d;
  b[0][0] = (a[1][1] * a[2][2] - a[2][1] * a[1][2]) * inv;
  b[0][1] = (a[2][1] * a[0][2] - a[2][2] * a[0][1]) * inv;
  b[0][2] = (a[0][1] * a[1][2] - a[0][2] * a[1][1]) * inv;
  b[1][0] = (a[2][0] * a[1][2] - a[2][2] * a[1][0]) * inv;
  b[1][1] = (a[0][0] * a[2][2] - a[2][0] * a[0][2]) * inv;
  b[1][2] = (a[0][2] * a[1][0] - a[0][0] * a[1][2]) * inv;
  b[2][0] = (a[2][1] * a[1][0] - a[2][0] * a[1][1]) * inv;
  b[2][1] = (a[2][0] * a[0][1] - a[2][1] * a[0][0]) * inv;
  b[2][2] = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) * inv;
}

double get_magnitude(const double* v) {
  return std::sqrt((v[0] * v[0] + v[1] * v[1]) + v[2] * v[2]);
}

double get_dot(const double* u, const double* v) { return u[0] * v[0] + u[1] * v[1] + u[2] * v[2]; }

void mat_vec_mul(const double (*m)[3], const double* v, double* out) {
  const double x = v[0], y = v[1], z = v[2];
  for (int i = 0; i < 3; ++i) out[i] = m[i][0] * x + m[i][1] * y + m[i][2] * z;
}

void mat_vec_mul_n(const double (*m)[3], const double (*vin)[3], double (*vout)[3], int n) {
  for (int k = 0; k < n; ++k) mat_vec_mul(m, vin[k], vout[k]);
}

void mat_mat_mul(const double (*a)[3], const double (*b)[3], double (*c)[3]) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) c[i][j] = 0.0;
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
    }
  }
}

void mat_mat_mul_nxn(const double* const* a, const double* const* b, double** c, int n) {
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) c[i][j] = 0.0;
  }
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      for (int k = 0; k < n; ++k) c[i][j] += a[i][k] * b[k][j];
    }
  }
}

void mat_scale(const double (*a)[3], double s, double (*c)[3]) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) c[i][j] = s * a[i][j];
  }
}

void mat_mat_add(const double (*a)[3], const double (*b)[3], double (*c)[3]) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) c[i][j] = a[i][j] + b[i][j];
  }
}

double anint(double x) {
  const double shifted = x > 0.0 ? x + 0.5 : x - 0.5;
  // Truncation into 32 bits; what does not fit (NaN included) gets the value the processor's
  // conversion gives, INT32_MIN, without converting out of range.
  if (!(shifted > -2147483649.0 && shifted < 2147483648.0)) return -2147483648.0;
  return static_cast<double>(static_cast<std::int32_t>(shifted));
}

void rot_matrix_from_dir_vector_and_angle(double (*r)[3], const double* axis, double angle) {
  const double theta = kDegreePi * angle / 180.0;
  const double s = std::sin(theta), one_minus_c = 1.0 - std::cos(theta);
  const double x = axis[0], y = axis[1], z = axis[2];
  const double k[3][3] = {{0.0, -z, y}, {z, 0.0, -x}, {-y, x, 0.0}};
  const double k2[3][3] = {{-(y * y + z * z), x * y, x * z},
                           {x * y, -(x * x + z * z), y * z},
                           {x * z, y * z, -(x * x + y * y)}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j)
      r[i][j] = (i == j ? 1.0 : 0.0) + s * k[i][j] + one_minus_c * k2[i][j];
  }
}

}  // namespace mmutil
