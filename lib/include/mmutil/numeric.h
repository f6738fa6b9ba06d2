// Numerical routines of the mmutil utility library: random numbers, three-by-three linear
// algebra, the symmetric eigen-solver, integration, regression and index sorting. None is
// used by the energy job itself.
//
// They serve kinetic Monte Carlo and geometry codes whose results are compared run to run, so
// each follows its published method to the bit: the constants, the order of evaluation and the
// random stream's state are part of the contract, and the library is built without fused
// multiply-adds. Matrices are row-major; a 3x3 matrix is a pointer to rows of three doubles.
#ifndef MMUTIL_NUMERIC_H
#define MMUTIL_NUMERIC_H

#include <cstdint>

namespace mmutil {

// ---------------------------------------------------------------------------------------------
// Random numbers. One process-wide stream, L'Ecuyer's combined generator with a Bays-Durham
// shuffle table in 64-bit integers. Its seed `idum` starts at 1000 and the table starts
// empty (all zero), so an unseeded program draws the same numbers on every run. A positive
// seed never refills the table: it fills one slot per draw. Not for use from two threads.

// ran2()
//
// One step of the generator on `*seed` and the shared tables; returns a double in
// (0, 0.99999988], larger results being returned as 0.99999988. A seed of 0 or below first
// resets the tables (0 counts as -1, a negative seed as its magnitude); this is the only way to
// reset them. Seeds are meant to lie within 32 bits, as rand() gives; larger ones give
// meaningless numbers but never touch memory outside the tables.
//
//   seed = 0 and seed = -1  ->  the same numbers, 0.2853808990946861 first
double ran2(std::int64_t* seed);

// randUniform()
//
// ran2() on the shared seed `idum`.
//
//   first three calls of an unseeded program  ->  0.6554163483485531, 0.20099518545185716,
//   0.8936223876466522, leaving idum = 2063054562
double randUniform();

// init_random_seed()
//
// Seeds the C library generator with the current calendar time and stores its first rand()
// result in `idum`. The table, the second generator and a banked normal deviate are kept.
void init_random_seed();

// random_stream_seed()
//
// The shared seed `idum` as it stands. The stream's state is private to the library so that
// nothing but a draw or init_random_seed() can change it; this read-only view lets a caller
// log or check how far the stream has gone.
//
//   an unseeded program  ->  1000
std::int64_t random_stream_seed();

// randGaussian()
//
// A standard normal deviate by Marsaglia's polar method: a generating call draws the pair
// (v1, v2) = (2u - 1, 2u' - 1) until 0 < v1^2 + v2^2 < 1, returns v1 * factor and banks v2 and
// factor; the next call returns v2 * factor without drawing.
//
//   unseeded: first call  ->  (2 * 0.6554163483485531 - 1) * factor, second  ->
//   (2 * 0.20099518545185716 - 1) * factor
double randGaussian();

// randExponential()
//
// An exponential deviate of mean 1: -ln(u) for one draw u (2^-31 in place of an exact 0).
//
//   unseeded first call  ->  -ln(0.6554163483485531)
double randExponential();

// select_reaction()
//
// Picks the event of one kinetic Monte Carlo step: the first index i whose running sum
// rates[0] + ... + rates[i] exceeds r * total strictly; -1 when none does, when n < 1 (the
// array is then not read) or when the rates are NaN. `r` is meant uniform in [0, 1) and `total`
// the sum of the rates; neither is checked. A rate of 0 is never picked.
//
//   rates {1, 0, 2}, total 3:  r = 0  ->  0;   r = 1/3  ->  2;   r = 1  ->  -1
int select_reaction(const double* rates, int n, double total, double r);

// ---------------------------------------------------------------------------------------------
// Three-by-three linear algebra. Results go to storage the caller owns; nothing is checked
// except by invert(): a singular matrix, NaN input or overlapping storage gives a wrong result
// silently. Angles are in degrees, converted with the constant 3.1415926535898, which is
// 7.1e-15 above pi and kept so that rotations reproduce earlier runs.

// det()
//
// The determinant, expanded along the first row and summed from 0.0 in column order.
//
//   rows (1, 2, 3), (0, 1, 4), (5, 6, 0)  ->  1
double det(const double (*a)[3]);

// transpose_matrix()
//
// Transposes `a` in place.
void transpose_matrix(double (*a)[3]);

// transpose_matrix()
//
// Transposes the order-`n` matrix held as `n` row pointers in place; n <= 1 does nothing.
void transpose_matrix(double** a, int n);

// invert()
//
// Writes the inverse of `a` to `b`, as the adjugate times 1 / det(a). Ends the process with
// status 255 after the error header (unit "mmutil") and "invert - Result matrix overlaps
// input" when `b` is `a` (partial overlaps are not detected), or "Determinant of matrix is
// zero." when |det(a)| < 1e-30. A NaN determinant passes and gives a NaN inverse.
//
//   determinant 1e-30  ->  inverted;   1e-31  ->  the run ends
void invert(const double (*a)[3], double (*b)[3]);

// get_magnitude()
//
// The length of the 3-vector `v`, sqrt((x^2 + y^2) + z^2).
//
//   (3, 4, 12)  ->  13
double get_magnitude(const double* v);

// get_dot()
//
// The dot product of two 3-vectors, summed left to right.
//
//   (1, 2, 3) . (4, -5, 6)  ->  12
double get_dot(const double* u, const double* v);

// mat_vec_mul()
//
// out = m v. `out` may be `v` itself (all of v is read first); no other overlap is allowed.
void mat_vec_mul(const double (*m)[3], const double* v, double* out);

// mat_vec_mul_n()
//
// vout[k] = m vin[k] for the `n` vectors (rows) of `vin`; `vout` may be `vin`. n <= 0 does
// nothing.
void mat_vec_mul_n(const double (*m)[3], const double (*vin)[3], double (*vout)[3], int n);

// mat_mat_mul()
//
// c = a b. `c` is cleared first, so it must not share storage with `a` or `b`.
void mat_mat_mul(const double (*a)[3], const double (*b)[3], double (*c)[3]);

// mat_mat_mul_nxn()
//
// c = a b for order-`n` matrices held as row pointers; n < 1 does nothing. `c` is cleared
// first, so it must not share storage with `a` or `b`.
void mat_mat_mul_nxn(const double* const* a, const double* const* b, double** c, int n);

// mat_scale()
//
// c = s a, element by element; `c` may be `a`.
void mat_scale(const double (*a)[3], double s, double (*c)[3]);

// mat_mat_add()
//
// c = a + b, element by element; `c` may be `a` or `b`.
void mat_mat_add(const double (*a)[3], const double (*b)[3], double (*c)[3]);

// anint()
//
// `x` rounded to the nearest whole number, halves away from zero, through a 32-bit integer:
// results outside -2147483648 ... 2147483647, and NaN, give -2147483648.0, the processor's
// integer overflow value. Zero and small negatives give +0.0.
//
//   2.5  ->  3.0;   -2.5  ->  -3.0;   -0.4  ->  0.0;   3.0e9  ->  -2147483648.0
double anint(double x);

// rot_matrix_from_dir_vector_and_angle()
//
// r = the rotation by `angle` degrees about the unit vector `axis`, counter-clockwise seen
// from the axis tip, by Rodrigues' formula I + sin(t) K + (1 - cos(t)) K^2 with K the cross
// product matrix of the axis. The axis is not normalised: another length gives a matrix that
// is not a rotation.
//
//   axis (0, 0, 1), 90 degrees  ->  rows (0, -1, 0), (1, 0, 0), (0, 0, 1) to rounding
void rot_matrix_from_dir_vector_and_angle(double (*r)[3], const double* axis, double angle);

// ---------------------------------------------------------------------------------------------
// Symmetric eigen-solver: cyclic Jacobi rotations for orders 1 to 3.

// jacobi_nr()
//
// The eigenvalues `d` (n values) and eigenvectors (the columns of `v`, orthonormal) of the
// symmetric matrix `a` of order `n` (1 to 3; not checked), and the number of rotations done in
// `nrot`. Reads only the diagonal and the strict upper triangle of `a`, and destroys the
// latter. On convergence the pairs are sorted by eigenvalue, largest first (see eigsrt_nr()).
// After 50 sweeps without convergence it prints "ERROR: Too many iterations in routine
// jacobi" on standard output and leaves `d` and `v` as they stand, unsorted; the run goes on.
//
//   ((2, 1), (1, 2))  ->  d = (3, 1), v columns (1, 1)/sqrt(2), (1, -1)/sqrt(2) up to sign,
//   nrot = 1
void jacobi_nr(double (*a)[3], int n, double* d, double (*v)[3], int& nrot);

// eigsrt_nr()
//
// Sorts the `n` values of `d` into descending order by selection, exchanging the columns of
// `v` alongside (`v` may be null). Of equal values the last one is taken first.
//
//   d = (2, 5, 5)  ->  (5, 5, 2) with v's columns in the order 2, 1, 0
void eigsrt_nr(double* d, double (*v)[3], int n);

// ---------------------------------------------------------------------------------------------
// Integration and regression.

// rk4_one()
//
// One classical fourth-order Runge-Kutta step of du/dt = f(t, u) from (t0, u0) over `dt`;
// returns u at t0 + dt. The four slopes are combined as (((2 f1 + f0) + 2 f2) + f3) dt / 6.
//
//   f = u, t0 = 0, u0 = 1, dt = 0.1  ->  1.1051708333333334
double rk4_one(double t0, double u0, double dt, double (*f)(double, double));

// rk4_vec()
//
// The same step for a system of `m` equations. `f(t, m, u)` returns a new array (array new)
// of the m derivatives, which the step releases; it is called four times, at t0, t0 + dt/2
// twice and t0 + dt. Returns a new array of the m values at t0 + dt, which the caller
// releases with array delete; `u0` is only read. m = 0 still calls `f` four times. A negative m
// throws std::bad_array_new_length after the first call of `f`, whose array is then lost.
double* rk4_vec(double t0, int m, double* u0, double dt, double* (*f)(double, int, double*));

// LinearRegression()
//
// The least-squares line y = a + b x through the `n` points (x[i], y[i]), with `s` the
// standard error of the estimate (divided by n - 2). Returns 0. With n < 3 it writes "Not
// enough data [n] (at least n > 2)!" on standard error, sets a = b = s = 0 and returns -1.
// When the x values are (nearly) all equal it sets a = b = s = 0 and still returns 0. An exact
// fit can give a NaN `s` through rounding.
//
//   (0, 1), (1, 3), (2, 5)  ->  0, a = 1, b = 2, s = 0
int LinearRegression(const double* x, const double* y, int n, double* a, double* b, double* s);

// ---------------------------------------------------------------------------------------------
// Index sorting: two different quicksorts, both ascending and not stable, recursive, with a
// depth and a running time that are quadratic in the worst case.

// quickSort_i()
//
// Sorts the `n` keys of `a` in place and moves the entries of `idx` with them (first-element
// pivot, keys equal to it go left). n <= 1 does nothing.
//
//   a = (2, 2, 1), idx = (0, 1, 2)  ->  a = (1, 2, 2), idx = (2, 1, 0)
void quickSort_i(int* a, int* idx, int n);

// quickSort_d()
//
// Reorders the `n` indices of `idx` so that a[idx[0]] <= a[idx[1]] <= ...; `a` is left as it
// is. The caller fills `idx` (normally 0 ... n - 1; any valid indices into `a` will do). Even
// for n = 0 it reads idx[0] and a[idx[0]], so both must hold at least one element.
//
//   a = (0.5, -1.0, 2.0), idx = (0, 1, 2)  ->  idx = (1, 0, 2)
void quickSort_d(const double* a, int* idx, int n);

// swap_int(), swap_dbl()
//
// Exchange the values that `p` and `q` point to.
void swap_int(int* p, int* q);
void swap_dbl(double* p, double* q);

}  // namespace mmutil

#endif  // MMUTIL_NUMERIC_H
