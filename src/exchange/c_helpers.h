#pragma once

namespace corvath::exchange {

/// A function of the generated C files that models or criteria call. "@" stands for the prefix.
struct CHelper {
  const char* name;  ///< behind the prefix and "_"
  const char* text;
};

/// What a file needs goes into it, in this order: those further down call those above.
inline constexpr CHelper kCHelpers[] = {
    {"squared", R"(/* Squared distance of two points. */
static double @_squared(const double *u, const double *p, int n)
{
  double sum = 0.0;
  int j;
  for (j = 0; j < n; ++j)
    sum += (u[j] - p[j]) * (u[j] - p[j]);
  return sum;
}
)"},
    {"scaled", R"(/* The same with a factor for each coordinate. */
static double @_scaled(const double *u, const double *p, const double *factors, int n)
{
  double sum = 0.0;
  int j;
  for (j = 0; j < n; ++j)
    sum += (u[j] - p[j]) * (u[j] - p[j]) * factors[j];
  return sum;
}
)"},
    {"exp", R"(/* Of numbers up to 709; rounds as the library does: 2^n exp(r), x = n ln 2 + r. */
static double @_exp(double x)
{
  static const double c[9] = {
    2.7620088445409746e-07, 2.7557268459997064e-06, 2.4801521295954376e-05,
    0.00019841269863053618, 0.0013888888917213717, 0.008333333333330062,
    0.04166666666662413, 0.16666666666666669, 0.5
  };
  union {
    unsigned long long bits;
    double number;
  } scale;
  double n, r, q = 2.510038549551032e-08;
  int i;
  if (x < -746.0)
    return 0.0;
  if (!(x <= 709.0))
    return x > 709.0 ? HUGE_VAL : x;
  n = rint(x * 1.4426950408889634);
  r = (x - n * 0.6931471805592082) - n * 7.371002565167799e-13;
  for (i = 0; i < 9; ++i)
    q = q * r + c[i];
  r = 1.0 + (r + r * r * q);
  if (n < -1000.0) /* may be less than a normal number */
    return ldexp(r, (int)n);
  scale.bits = (unsigned long long)((int)n + 1023) << 52;
  return r * scale.number;
}
)"},
    {"collect", R"(/* Adds up eight partial sums and clears them. */
static double @_collect(double *partial)
{
  double sum = 0.0;
  int i;
  for (i = 0; i < 8; ++i) {
    sum += partial[i];
    partial[i] = 0.0;
  }
  return sum;
}
)"},
    {"regularised", R"(/* Weight of a point, 0 from its radius on. */
static double @_regularised(double squared, double squared_radius)
{
  const double ratio = squared / squared_radius + 1e-5;
  const double weight = 1.0 / (ratio * ratio) - 1.0 / (1.00001 * 1.00001);
  return weight < 0.0 ? 0.0 : weight;
}
)"},
    {"nearest",
     R"(/* The squared distance of the count-th nearest of num points; heap holds the count
   smallest so far, the largest of them first. */
static double @_nearest(const double *u, const double *points, int num, int n, int count,
                        double *heap)
{
  int i, at, child;
  double s;
  for (i = 0; i < num; ++i) {
    s = @_squared(u, points + (long)i * n, n);
    if (s != s)
      return s;
    if (i < count) { /* a leaf rises */
      for (at = i; at > 0 && heap[(at - 1) / 2] < s; at = (at - 1) / 2)
        heap[at] = heap[(at - 1) / 2];
      heap[at] = s;
    } else if (s < heap[0]) { /* the root sinks */
      for (at = 0; (child = 2 * at + 1) < count; at = child) {
        if (child + 1 < count && heap[child + 1] > heap[child])
          ++child;
        if (heap[child] <= s)
          break;
        heap[at] = heap[child];
      }
      heap[at] = s;
    }
  }
  return heap[0];
}
)"},
    {"add",
     R"(/* Adds a weighted point to the lower triangle of a normal matrix and its right side. */
static void @_add(int n, double weight, double value, const double *basis, double *normal,
                  double *right)
{
  int row, column;
  for (row = 0; row < n; ++row) {
    for (column = 0; column <= row; ++column)
      normal[row * n + column] += basis[row] * basis[column] * weight;
    right[row] += basis[row] * value * weight;
  }
}
)"},
    {"solve",
     R"(/* The fit at a point with the terms at, by L D L' in the given order, rounded as in
   the library. With definite it is NAN where a pivot is not above 1e-10 of its diagonal entry; without,
   what a vanishing pivot leaves open is 0. work: n * (n + 3) numbers. */
static double @_solve(int n, const double *normal, const double *right, const double *at,
                      const int *order, int definite, double *work)
{
  double *const z = work + n * n, *const least = z + n, *const factors = least + n;
  double inverse, sum = 0.0;
  int i, j, k, row, column;
  for (i = 0; i < n; ++i) {
    for (j = 0; j <= i; ++j) {
      row = order[i] > order[j] ? order[i] : order[j];
      column = order[i] > order[j] ? order[j] : order[i];
      work[i * n + j] = normal[row * n + column];
    }
    z[i] = right[order[i]];
    least[i] = work[i * n + i] * 1e-10;
  }
  for (j = 0; j < n; ++j) {
    if (definite && !(work[j * n + j] > least[j]))
      return NAN;
    inverse = 1.0 / work[j * n + j];
    if (!definite && fabs(work[j * n + j]) <= 2.2250738585072014e-308)
      inverse = 0.0;
    for (i = j + 1; i < n; ++i) {
      factors[i] = work[i * n + j] * inverse;
      for (k = j + 1; k <= i; ++k)
        work[i * n + k] -= factors[i] * work[k * n + j];
      z[i] -= factors[i] * z[j];
    }
    work[j * n + j] = inverse;
  }
  for (j = n - 1; j >= 0; --j) {
    for (i = j + 1; i < n; ++i)
      z[j] -= work[i * n + j] * z[i];
    z[j] *= work[j * n + j];
    sum += z[j] * at[order[j]];
  }
  return sum;
}
)"},
    {"fit", R"(/* The same in the order of the terms, or else by the size of the diagonal. */
static double @_fit(int n, const double *normal, const double *right, const double *at,
                    double *work, int *order)
{
  double v;
  int i, k, pivot;
  for (i = 0; i < n; ++i)
    order[i] = i;
  v = @_solve(n, normal, right, at, order, 1, work);
  if (v == v)
    return v;
  for (k = 0; k < n; ++k) {
    pivot = k;
    for (i = k + 1; i < n; ++i)
      if (fabs(normal[order[i] * (n + 1)]) > fabs(normal[order[pivot] * (n + 1)]))
        pivot = i;
    i = order[k];
    order[k] = order[pivot];
    order[pivot] = i;
  }
  return @_solve(n, normal, right, at, order, 0, work);
}
)"},
    {"differences", R"(/* Central differences of f, a step to each side. */
static void @_differences(double (*f)(const double *), const double *inputs, const double *steps,
                          double *gradient)
{
  double x[@@_NUM_INPUTS], below, above;
  int j;
  for (j = 0; j < @@_NUM_INPUTS; ++j)
    x[j] = inputs[j];
  for (j = 0; j < @@_NUM_INPUTS; ++j) {
    gradient[j] = 0.0;
    if (steps[j] == 0.0)
      continue;
    x[j] = inputs[j] - steps[j];
    below = f(x);
    x[j] = inputs[j] + steps[j];
    above = f(x);
    x[j] = inputs[j];
    gradient[j] = (above - below) / steps[j] * 0.5;
  }
}
)"},
    {"quotient", R"(static double @_quotient(double a, double b)
{
  return b != 0.0 ? a / b : NAN;
}
)"},
    {"power", R"(/* Whole powers are products; of a negative number there are no others. */
static double @_power(double x, double y)
{
  double whole, n, result = 1.0;
  if (y != y)
    return y;
  if (fabs(x) < 2.220446049250313e-16)
    return y < 0.0 ? NAN : y > 0.0 ? 0.0 : 1.0;
  whole = (ceil(y) - y) * (ceil(y) - y) < 2.220446049250313e-16 ? ceil(y) : floor(y);
  if (!((whole - y) * (whole - y) < 2.220446049250313e-16))
    return x < 0.0 ? NAN : pow(x, y);
  for (n = fabs(whole); n > 0.0; n = floor(n / 2.0)) {
    if (fmod(n, 2.0) == 1.0)
      result *= x;
    x *= x;
  }
  return whole < 0.0 ? 1.0 / result : result;
}
)"},
    {"largest", R"(/* A NaN that is not the first is passed over, as in the library. */
static double @_largest(const double *numbers, int n)
{
  double best = numbers[0];
  int i;
  for (i = 1; i < n; ++i)
    if (numbers[i] > best)
      best = numbers[i];
  return best;
}
)"},
    {"smallest", R"(/* A NaN that is not the first is passed over, as in the library. */
static double @_smallest(const double *numbers, int n)
{
  double best = numbers[0];
  int i;
  for (i = 1; i < n; ++i)
    if (numbers[i] < best)
      best = numbers[i];
  return best;
}
)"},
};

}  // namespace corvath::exchange
