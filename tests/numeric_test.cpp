// Tests of mmutil/numeric.h: random stream, 3x3 algebra, Jacobi, Runge-Kutta, fits, sorts.
#include "mmutil/numeric.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <numeric>
#include <random>
#include <vector>

namespace mmutil {
namespace {

using Matrix = double[3][3];
using Doubles = std::vector<double>;
using Ints = std::vector<int>;

// The first draws of an unseeded run and the seed after each (1000 * 40014^k mod 2147483563).
const double kFirstDraws[] = {0.6554163483485531, 0.20099518545185716, 0.8936223876466522,
                              0.2818865431288053};
const std::int64_t kSeedAfter[] = {40014000, 1244941565, 2063054562, 1797082148};

// The random stream is process-wide. Its checks run in a death-test child that starts this
// binary afresh ("threadsafe" style), so the stream is in its start state whatever other tests
// drew; the child prints each mismatch on standard error, and passes when it prints nothing.
void expect_in_fresh_process(void (*checks)()) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT((checks(), std::exit(0)), testing::ExitedWithCode(0), "^$");
}
void check(const char* what, double got, double want) {  // seeds too: they fit in 53 bits
  if (std::memcmp(&got, &want, sizeof got) != 0)
    std::fprintf(stderr, "%s: got %.17g, want %.17g\n", what, got, want);
}

// The two values of the polar method's pair made of two uniform draws.
std::pair<double, double> polar_pair(double ua, double ub) {
  const double v1 = 2.0 * ua - 1.0, v2 = 2.0 * ub - 1.0, rsq = v1 * v1 + v2 * v2;
  const double factor = std::sqrt(-2.0 * std::log(rsq) / rsq);
  return {v1 * factor, v2 * factor};
}

TEST(RandomStream, UnseededRunsDrawFixedNumbers) {
  expect_in_fresh_process([] {
    check("seed at start", random_stream_seed(), 1000);
    for (int k = 0; k < 4; ++k) {
      check("uniform", randUniform(), kFirstDraws[k]);
      check("seed", random_stream_seed(), kSeedAfter[k]);
    }
  });
  expect_in_fresh_process([] { check("exp", randExponential(), -std::log(kFirstDraws[0])); });
  // A generating call returns the pair's first value; the next returns the banked second.
  expect_in_fresh_process([] {
    for (int pair = 0; pair < 2; ++pair) {
      const auto [first, second] = polar_pair(kFirstDraws[2 * pair], kFirstDraws[2 * pair + 1]);
      check("generating call", randGaussian(), first);
      check("banked call", randGaussian(), second);
    }
    check("seed after two pairs", random_stream_seed(), kSeedAfter[3]);
  });
  // Reseeding stores rand()'s first value after srand(time) and keeps the banked value.
  expect_in_fresh_process([] {
    randGaussian();
    const std::time_t before = std::time(nullptr);
    init_random_seed();
    std::srand(static_cast<unsigned>(before));
    const std::int64_t seed = random_stream_seed(), from_before = std::rand();
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    if (seed != from_before) check("seed from rand()", seed, std::rand());
    check("banked value", randGaussian(), polar_pair(kFirstDraws[0], kFirstDraws[1]).second);
    check("seed kept", random_stream_seed(), seed);
  });
}

TEST(RandomStream, ZeroOrNegativeSeedRefillsTheTable) {
  for (std::int64_t seed : {0, -1}) {
    for (double want : {0.2853808990946861, 0.2533581892659171, 0.09346853100919404})
      EXPECT_EQ(ran2(&seed), want);
    EXPECT_EQ(seed, 1113702789);
  }
  // A thousand draws go through every slot of the shuffle table; the values come from a
  // separate implementation of the generator.
  std::int64_t seed = -1;
  double last = 0;
  for (int draw = 0; draw < 1000; ++draw) last = ran2(&seed);
  EXPECT_EQ(last, 0.8760565493557633);
  EXPECT_EQ(seed, 1197636569);
}

TEST(RandomStream, SelectReactionPicksTheFirstSumAboveTarget) {
  const double rates[] = {1, 0, 2}, nan_rates[] = {NAN, 1};
  const std::pair<double, int> picks[] = {{0, 0}, {0.2, 0}, {1.0 / 3, 2}, {0.999, 2}, {1, -1}};
  for (const auto& [r, index] : picks) EXPECT_EQ(select_reaction(rates, 3, 3, r), index) << r;
  EXPECT_EQ(select_reaction(nullptr, 0, 3, 0.5), -1);
  EXPECT_EQ(select_reaction(nullptr, -1, 3, 0.5), -1);
  EXPECT_EQ(select_reaction(nan_rates, 2, 1, 0.5), -1);
}

// The nine elements of a matrix, row by row.
Doubles flat(const Matrix m) {
  Doubles elements(9);
  std::memcpy(elements.data(), m, sizeof(Matrix));
  return elements;
}

void expect_near_identity(const Matrix m, double tolerance) {
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(m[i / 3][i % 3], i % 4 == 0, tolerance) << i;
}

TEST(Matrix3, InverseTimesMatrixIsIdentity) {
  const struct {
    Matrix a;
    double det;
  } cases[] = {{{{1, 2, 3}, {0, 1, 4}, {5, 6, 0}}, 1},
               {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}, -1},
               {{{2, -1, 0.5}, {0.25, 3, 1}, {-1, 2, 4}}, 23.75},
               {{{1e-30, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 1e-30}};  // the smallest accepted
  for (const auto& c : cases) {
    EXPECT_EQ(det(c.a), c.det);
    Matrix inverse, product;
    invert(c.a, inverse);
    mat_mat_mul(c.a, inverse, product);
    expect_near_identity(product, 1e-15);
  }
}

// The report goes to standard output; the death tests read it on standard error.
TEST(Matrix3DeathTest, InvertEndsTheRunOnOverlapOrZeroDeterminant) {
  Matrix a = {{1e-31, 0, 0}, {0, 1, 0}, {0, 0, 1}}, b;
  const std::string header = "^\nERROR  transport : mmutil : line [0-9]+ : \n";
  EXPECT_EXIT((dup2(2, 1), invert(a, a)), testing::ExitedWithCode(255),
              header + "invert - Result matrix overlaps input\n$");
  EXPECT_EXIT((dup2(2, 1), invert(a, b)), testing::ExitedWithCode(255),
              header + "Determinant of matrix is zero\\.\n$");
}

TEST(Matrix3, ProductsAndTransposes) {
  Matrix a = {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}}, b = {{1, 0, 2}, {0, 1, 0}, {3, 0, 1}}, c;
  double *ra[] = {a[0], a[1], a[2]}, *rb[] = {b[0], b[1], b[2]}, *rc[] = {c[0], c[1], c[2]};
  mat_mat_mul_nxn(ra, rb, rc, 3);
  EXPECT_EQ(flat(c), (Doubles{10, 2, 5, 22, 5, 14, 37, 8, 24}));
  mat_vec_mul(a, b[0], b[0]);  // in place
  mat_vec_mul_n(a, b + 1, b + 1, 2);
  EXPECT_EQ(flat(b), (Doubles{7, 16, 27, 2, 5, 8, 6, 18, 31}));
  transpose_matrix(ra, 1);
  transpose_matrix(ra, 3);
  EXPECT_EQ(flat(a), (Doubles{1, 4, 7, 2, 5, 8, 3, 6, 10}));
  mat_scale(a, 0.5, c);
  mat_mat_add(a, c, c);  // in place
  EXPECT_EQ(flat(c), (Doubles{1.5, 6, 10.5, 3, 7.5, 12, 4.5, 9, 15}));
  const double x[3] = {3, 4, 12}, y[3] = {2, -5, 0.5};
  EXPECT_EQ(get_magnitude(x), 13);
  EXPECT_EQ(get_dot(x, y), -8);
}

TEST(Anint, RoundsHalvesAwayFromZeroThrough32Bits) {
  const double x[] = {2.5, -2.5, 0, -0.4, 2147483647.4, -2147483648.4, 2147483647.5, 3e9, NAN};
  const double rounded[] = {
      3, -3, 0, 0, 2147483647, -2147483648.0, -2147483648.0, -2147483648.0, -2147483648.0};
  for (int k = 0; k < 9; ++k) {
    EXPECT_EQ(anint(x[k]), rounded[k]) << x[k];
    EXPECT_FALSE(std::signbit(anint(x[k])) && rounded[k] == 0) << x[k];
  }
}

TEST(Rotation, TurnsRightHandedAboutAUnitAxis) {
  Matrix r, rt, product;
  const double s = 1 / std::sqrt(3.0), axes[][3] = {{0, 0, 1}, {1, 0, 0}, {s, -s, s}};
  for (const auto& axis : axes) {
    for (double angle : {90.0, -37.5, 180.0, 1000.0}) {
      rot_matrix_from_dir_vector_and_angle(r, axis, angle);
      std::memcpy(rt, r, sizeof r);
      transpose_matrix(rt);
      mat_mat_mul(r, rt, product);
      expect_near_identity(product, 1e-14);
      EXPECT_NEAR(det(r), 1, 1e-14);
    }
  }
  rot_matrix_from_dir_vector_and_angle(r, axes[0], 90);
  const Matrix quarter = {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}};
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(r[i / 3][i % 3], quarter[i / 3][i % 3], 1e-14);
  rot_matrix_from_dir_vector_and_angle(r, axes[0], 180);
  EXPECT_NEAR(r[1][0], -6.98296e-15, 1e-20);  // sin(3.1415926535898), not sin(pi) = 1.2e-16
}

TEST(Jacobi, EigenPairsOfSymmetricMatrices) {
  std::mt19937 engine(4);
  std::uniform_real_distribution<double> value(-5, 5);
  for (int trial = 0; trial < 40; ++trial) {  // the last two have a double eigenvalue
    const int n = 2 + trial % 2;
    Matrix m, a, v;  // a: m with a lower triangle that must be ignored
    for (int i = 0; i < 3; ++i) {
      for (int j = i; j < 3; ++j) m[i][j] = m[j][i] = trial < 38 ? value(engine) : 4 - 3 * (i != j);
      for (int j = 0; j < 3; ++j) a[i][j] = m[i][j] + (i > j ? 1e3 : 0);
    }
    double d[3];
    int nrot = -1;
    jacobi_nr(a, n, d, v, nrot);
    EXPECT_GT(nrot, 0);
    for (int k = 0; k < n; ++k) {
      EXPECT_TRUE(k == 0 || d[k - 1] >= d[k]);
      for (int i = 0; i < n; ++i) {
        double av = 0, vv = 0;  // (A v_k)_i, and (V^T V)_ik
        for (int j = 0; j < n; ++j) av += m[i][j] * v[j][k];
        for (int j = 0; j < n; ++j) vv += v[j][i] * v[j][k];
        EXPECT_NEAR(av, d[k] * v[i][k], 1e-13);
        EXPECT_NEAR(vv, i == k, 1e-14);
        EXPECT_TRUE(k < i || a[k][i] == m[k][i] + (k > i) * 1e3);  // diagonal, lower part kept
      }
    }
  }
}

TEST(Jacobi, FixedCases) {
  // Diagonal: no rotation, sorted largest first, the later of equal values first.
  Matrix diagonal = {{2}, {0, 5}, {0, 0, 5}}, v;
  double d[3];
  int nrot = -1;
  jacobi_nr(diagonal, 3, d, v, nrot);
  EXPECT_EQ(nrot, 0);
  EXPECT_EQ(Doubles(d, d + 3), (Doubles{5, 5, 2}));
  EXPECT_EQ(flat(v), (Doubles{0, 0, 1, 0, 1, 0, 1, 0, 0}));
  // The sweep rules fix the rotations done and the last bits of the eigenvalues.
  Matrix full = {{100, 0.025, 0.05}, {0, 0.5, 4}, {0, 0, 5}};
  jacobi_nr(full, 3, d, v, nrot);
  EXPECT_EQ(nrot, 7);
  EXPECT_EQ(Doubles(d, d + 3),
            (Doubles{100.00003371216916, 7.339356357187205, -1.8393900693563665}));
  // From the fifth sweep an element negligible against both its diagonal elements is set to
  // zero unrotated: here a 4.8e-19 between eigenvalues -1e6 and 192.
  Matrix wide = {{-0.5, 8e5, 200}, {0, 90, -6e5}, {0, 0, -0.04}};
  jacobi_nr(wide, 3, d, v, nrot);
  EXPECT_EQ(nrot, 10);
  Matrix two = {{2, 1}, {1, 2}}, nan = {{1, NAN, 0}, {0, 2, 0.5}, {0, 0, 3}};
  jacobi_nr(two, 2, d, v, nrot);
  EXPECT_EQ(nrot, 1);
  EXPECT_EQ(Doubles(d, d + 2), (Doubles{3, 1}));
  EXPECT_NEAR(v[0][0] * v[1][0], 0.5, 1e-15);
  EXPECT_NEAR(v[0][1] * v[1][1], -0.5, 1e-15);
  testing::internal::CaptureStdout();
  jacobi_nr(nan, 3, d, v, nrot);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "ERROR: Too many iterations in routine jacobi\n");
  double values[] = {1, 3, 2};
  eigsrt_nr(values, nullptr, 3);
  EXPECT_EQ(Doubles(values, values + 3), (Doubles{3, 2, 1}));
}

// Right-hand sides du/dt = u that record the times (and states) they are called with. For a
// negative count, array new would throw first; a static array stands in.
Doubles g_calls;
double grow(double t, double u) {
  g_calls.insert(g_calls.end(), {t, u});
  return u;
}
double* grow_all(double t, int m, double* u) {
  static double unused[1];
  g_calls.push_back(t);
  return m < 0 ? unused : std::copy(u, u + m, new double[m]) - m;
}

// The sanitizer and valgrind runs check that every array is released.
TEST(RungeKutta, StepsWithFourSlopesInTheirOrder) {
  EXPECT_EQ(rk4_one(0.3, 1, 0.1, grow), 1.1051708333333334);  // u0 + dt / 6 * (...) is 1 ulp less
  EXPECT_EQ(g_calls, (Doubles{0.3, 1, 0.35, 1.05, 0.35, 1.0525, 0.4, 1.10525}));
  const double want[] = {1.1051708333333334, 2 * 1.1051708333333334};
  for (int m : {2, 0}) {
    g_calls.clear();
    double u0[] = {1, 2};
    double* u = rk4_vec(0.3, m, u0, 0.1, grow_all);
    EXPECT_EQ(g_calls, (Doubles{0.3, 0.35, 0.35, 0.4}));
    EXPECT_EQ(Doubles(u, u + m), Doubles(want, want + m));
    delete[] u;
  }
  g_calls.clear();
  EXPECT_THROW(rk4_vec(0, -1, nullptr, 0.1, grow_all), std::bad_array_new_length);
  EXPECT_EQ(g_calls.size(), 1u);
}

TEST(Regression, FitsALineOrReportsTooFewPoints) {
  const double x[] = {0, 1, 2, 3}, y[] = {0, 1, 1, 2}, exact[] = {1, 3, 5},
               quarters[] = {0, 0.25, 0.5}, same_x[] = {0.22, 0.22, 0.22};
  const struct {
    const double *x, *y;
    int n, status;
    Doubles fit;                                          // a, b, s
  } cases[] = {{x, y, 4, 0, {0.1, 0.6, std::sqrt(0.1)}},  // residuals -0.1, 0.3, -0.3, 0.1
               {x, exact, 3, 0, {1, 2, 0}},
               {quarters, exact, 3, 0, {1, 8, 0}},  // |D| = 0.375: small, yet a line
               {same_x, exact, 3, 0, {0, 0, 0}},    // rounding leaves |D| = 5.6e-17
               {x, y, 2, -1, {0, 0, 0}}};
  for (const auto& c : cases) {
    Doubles fit(3, -1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(LinearRegression(c.x, c.y, c.n, &fit[0], &fit[1], &fit[2]), c.status);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              c.n < 3 ? "Not enough data [2] (at least n > 2)!\n" : "");
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(fit[k], c.fit[k], 1e-15) << c.n << k;
  }
}

TEST(IndexSort, SmallCases) {
  int a[] = {2, 2, 1}, idx[] = {0, 1, 2}, order[] = {0, 1, 2}, pair[] = {2, 0}, one[] = {1},
      ties[] = {0, 1, 2, 3, 4};
  quickSort_i(a, idx, 3);
  EXPECT_EQ(Ints(a, a + 3), (Ints{1, 2, 2}));
  EXPECT_EQ(Ints(idx, idx + 3), (Ints{2, 1, 0}));  // equal keys end in reverse input order
  const double keys[] = {0.5, -1.0, 2.0}, tie_keys[] = {2, 1, 2, 1, 2};
  quickSort_d(keys, order, 3);
  quickSort_d(keys, pair, 2);
  quickSort_d(keys, one, 0);
  quickSort_d(tie_keys, ties, 5);
  EXPECT_EQ(Ints(order, order + 3), (Ints{1, 0, 2}));
  EXPECT_EQ(Ints(pair, pair + 2), (Ints{0, 2}));
  EXPECT_EQ(one[0], 1);
  EXPECT_EQ(Ints(ties, ties + 5), (Ints{1, 3, 4, 0, 2}));  // scans stop on keys equal to the pivot
}

TEST(IndexSort, BothSortsAgreeWithStdSort) {
  std::mt19937 engine(7);
  for (int n = 0; n < 60; ++n) {
    std::uniform_int_distribution<int> key(-3, n % 3 == 0 ? 1000 : 3);  // often equal keys
    Ints keys(n), identity(n + 1);  // quickSort_d reads one index and key even when n = 0
    for (int& k : keys) k = key(engine);
    if (n == 59) std::sort(keys.rbegin(), keys.rend());
    std::iota(identity.begin(), identity.end(), 0);
    Ints sorted = keys, moved = keys, idx = identity, order = identity;
    Doubles doubles(keys.begin(), keys.end());
    doubles.push_back(0);
    std::sort(sorted.begin(), sorted.end());
    quickSort_i(moved.data(), idx.data(), n);
    quickSort_d(doubles.data(), order.data(), n);
    EXPECT_EQ(moved, sorted);
    for (int k = 0; k < n; ++k) {
      EXPECT_EQ(keys[idx[k]], sorted[k]) << n;
      EXPECT_EQ(doubles[order[k]], sorted[k]) << n;
    }
    EXPECT_TRUE(std::is_permutation(idx.begin(), idx.end(), identity.begin())) << n;
    EXPECT_TRUE(std::is_permutation(order.begin(), order.end(), identity.begin())) << n;
  }
}

}  // namespace
}  // namespace mmutil
