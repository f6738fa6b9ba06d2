// The index sorts of mmutil: two quicksorts that report the order of a list through a
// companion index array, and the exchanges they use.
#include "mmutil/numeric.h"

namespace mmutil {
namespace {

// Sorts a[beg, end) with idx alongside: first-element pivot, one-directional partition, keys
// equal to the pivot to the left; recurses on the left part and loops on the right.
void q_sort(int* a, int* idx, int beg, int end) {
  while (end > beg + 1) {
    const int piv = a[beg];
    int l = beg + 1, r = end;
    while (l < r) {
      if (a[l] <= piv) {
        ++l;
      } else {  // the element brought to l is examined next
        --r;
        swap_int(&a[l], &a[r]);
        swap_int(&idx[l], &idx[r]);
      }
    }
    --l;
    swap_int(&a[l], &a[beg]);
    swap_int(&idx[l], &idx[beg]);
    q_sort(a, idx, beg, l);
    beg = r;
  }
}

// Orders idx[left ... right] by the keys they name: middle pivot by value, read before
// anything else, and scans from both ends. The loop stops at i = j, which leaves that
// position in both parts; it is then sorted twice, which does no harm. Recurses on the left
// part and loops on the right.
void q_sort2(const double* a, int* idx, int left, int right) {
  for (;;) {
    const double piv = a[idx[(left + right) / 2]];
    int i = left, j = right;
    while (i < j) {
      while (a[idx[i]] < piv) ++i;
      while (a[idx[j]] > piv) --j;
      if (i <= j) {
        swap_int(&idx[i], &idx[j]);
        ++i;
        --j;
      }
    }
    if (left < j) q_sort2(a, idx, left, j);
    if (i >= right) return;
    left = i;
  }
}

}  // namespace

void quickSort_i(int* a, int* idx, int n) { q_sort(a, idx, 0, n); }

void quickSort_d(const double* a, int* idx, int n) { q_sort2(a, idx, 0, n - 1); }

void swap_int(int* p, int* q) {
  const int t = *p;
  *p = *q;
  *q = t;
}

void swap_dbl(double* p, double* q) {
  const double t = *p;
  *p = *q;
  *q = t;
}

}  // namespace mmutil
