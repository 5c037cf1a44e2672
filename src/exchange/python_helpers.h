#pragma once

namespace corvath::exchange {

/// What every generated Python module holds, behind its data.
inline constexpr char kPythonHelpers[] = R"py(
def _rows(inputs):
    """Inputs as n x m, and whether they were a single design."""
    x = np.asarray(inputs, dtype=float)
    if x.ndim not in (1, 2) or x.shape[-1] != len(INPUTS):
        raise ValueError(f"inputs of shape {x.shape}, expected ({len(INPUTS)},) or (n, {len(INPUTS)})")
    return np.atleast_2d(x), x.ndim == 1


def _basis(u, powers):
    columns = [np.ones(len(u))]
    for j, exponent in powers:
        columns.append(u[:, j] if exponent == 1 else u[:, j] ** float(exponent) if exponent > 2
                       else u[:, j] * u[:, j])
    return np.stack(columns, axis=1)


def _squared(u, points, factors=None):
    total = np.zeros((len(u), len(points)))
    for j in range(points.shape[1]):
        d = u[:, j, None] - points[:, j]
        total += d * d if factors is None else d * d * factors[j]
    return total


def _exp(x):
    """Of numbers up to 709; rounds as the library does: 2^n exp(r), x = n ln 2 + r."""
    n = np.rint(np.clip(x, -746.0, 709.0) * 1.4426950408889634)
    r = (x - n * 0.6931471805592082) - n * 7.371002565167799e-13
    q = 2.510038549551032e-08
    for c in (2.7620088445409746e-07, 2.7557268459997064e-06, 2.4801521295954376e-05,
              0.00019841269863053618, 0.0013888888917213717, 0.008333333333330062,
              0.04166666666662413, 0.16666666666666669, 0.5):
        q = q * r + c
    result = np.ldexp(1.0 + (r + r * r * q), np.nan_to_num(n).astype(int))
    return np.where(x < -746.0, 0.0, np.where(x > 709.0, np.inf, result))


def _sum(terms):
    """Over the columns, in the library's order, so that weights that nearly cancel leave the same."""
    total = np.zeros(len(terms))
    for first in range(0, terms.shape[1], 128):
        partial = np.zeros((len(terms), 8))
        for at in range(first, min(first + 128, terms.shape[1]), 8):
            some = terms[:, at:at + 8]
            partial[:, :some.shape[1]] += some
        part = np.zeros(len(terms))
        for column in partial.T:
            part += column
        total += part
    return total


def _weights(u, points, kernel):
    kind, *parameters = kernel
    if kind == "exponential" and len(parameters[0]) > 1:
        return _exp(_squared(u, points, parameters[0]))
    squared = _squared(u, points)
    if kind == "exponential":
        return _exp(squared * parameters[0][0])
    if kind == "regularised":
        ratio = squared / parameters[0] + 1e-5
        return np.maximum(1.0 / (ratio * ratio) - 1.0 / (1.00001 * 1.00001), 0.0)
    factor, count = parameters
    nearest = np.partition(squared, count - 1, axis=1)[:, count - 1]
    return _exp(squared * factor / nearest[:, None])


def _sums(weights, products):
    """Of weights (n x N) times products (N x k), point after point: near to singular normal equations
    magnify every rounding."""
    total = np.zeros((len(weights), products.shape[1]))
    step = max(1, 60_000 // max(1, total.size))
    for first in range(0, len(products), step):
        terms = weights.T[first:first + step, :, None] * products[first:first + step, None, :]
        terms[0] += total
        total = np.add.accumulate(terms, axis=0)[-1]
    return total


def _solve(normal, right, at, definite):
    """Fits at the points with the terms `at`, one for each row, by L D L', rounded as in the library.
    With `definite` NaN where a pivot is not above 1e-10 of its diagonal entry; without, what a
    vanishing pivot leaves open is 0."""
    n, p = right.shape
    a, z = normal.copy(), right.copy()
    least = np.einsum("nii->ni", normal) * 1e-10
    inverse = np.empty((n, p))
    usable = np.ones(n, dtype=bool)
    for j in range(p):
        pivot = a[:, j, j]
        usable &= pivot > least[:, j]
        vanishes = np.abs(pivot) <= 2.2250738585072014e-308
        inverse[:, j] = 1.0 / pivot if definite else np.where(vanishes, 0.0, 1.0 / pivot)
        factors = a[:, j + 1:, j] * inverse[:, j, None]
        a[:, j + 1:, j + 1:] -= factors[:, :, None] * a[:, None, j + 1:, j]
        z[:, j + 1:] -= factors * z[:, j, None]
    value = np.zeros(n)
    for j in reversed(range(p)):
        for i in range(j + 1, p):
            z[:, j] -= a[:, i, j] * z[:, i]
        z[:, j] *= inverse[:, j]
        value += z[:, j] * at[:, j]
    return np.where(usable, value, np.nan) if definite else value


def _fit(normal, right, at):
    """In the order of the terms, or else by the size of the diagonal."""
    value = _solve(normal, right, at, True)
    rest = np.flatnonzero(np.isnan(value))
    if len(rest) == 0:
        return value
    rows, p = np.arange(len(rest)), right.shape[1]
    order = np.tile(np.arange(p), (len(rest), 1))
    size = np.abs(np.einsum("nii->ni", normal[rest]))
    for k in range(p):
        pivot = k + np.argmax(size[rows[:, None], order[:, k:]], axis=1)
        order[rows, k], order[rows, pivot] = order[rows, pivot], order[rows, k].copy()
    sorted_normal = normal[rest[:, None, None], order[:, :, None], order[:, None, :]]
    value[rest] = _solve(sorted_normal, right[rest[:, None], order], at[rest[:, None], order], False)
    return value


def _local_fits(u, model):
    weights = _weights(u, model["points"], model["kernel"])
    values = model["values"][:, None]
    if model["powers"] is None:
        sums = _sums(weights, np.hstack([values, np.ones_like(values)]))
        return sums[:, 0] / sums[:, 1]
    basis = _basis(model["points"], model["powers"])
    p = basis.shape[1]
    if (values == values[0]).all():
        v = np.full(len(u), values[0])
    else:
        row, column = np.tril_indices(p)
        sums = _sums(weights, np.hstack([basis[:, row] * basis[:, column], basis * values]))
        normal = np.empty((len(u), p, p))
        normal[:, row, column] = normal[:, column, row] = sums[:, :len(row)]
        v = _fit(normal, sums[:, len(row):], _basis(u, model["powers"]))
    return np.where((weights > 1e-5).sum(axis=1) < p, np.nan, v)


def _splines(u, model):
    squared = _squared(u, model["points"])
    phi = 0.5 * squared * np.log(np.where(squared == 0.0, 1.0, squared))
    return u @ model["coefficients"] + model["constant"] + phi @ model["values"]


def _polynomial(u, model):
    v = np.full(len(u), model["constant"])
    terms = [u[:, j] ** float(e) if e > 2 else u[:, j] if e == 1 else u[:, j] * u[:, j]
             for j, e in model["powers"]] + [u[:, i] * u[:, j] for i, j in model["products"]]
    for coefficient, term in zip(model["coefficients"], terms):
        v += coefficient * term
    return v


def _back(v, steps):
    for kind, *parameters in steps:
        if kind == "scale":
            v = v / parameters[0] + parameters[1]
        elif kind == "limits":
            v = np.where(v < parameters[0], parameters[0], np.where(v > parameters[1], parameters[1], v))
        elif parameters[0] == 0:
            v = np.exp(v)
        elif parameters[0] == 1:
            v = v + 1.0
        else:
            v = (v * (1.0 / parameters[0]) + 1.0) ** float(parameters[0])
    return v


def _predict_rows(x, model):
    result = np.empty(len(x))
    block = max(1, 1_000_000 // max(1, model.get("size", 1)))  # bounds the memory
    for begin in range(0, len(x), block):
        u = x[begin:begin + block, model["inputs"]] * model["scale"] + model["offset"]
        with np.errstate(all="ignore"):
            if "power" in model:
                k = model["power"]
                u = np.log(u) if k == 0 else u - 1.0 if k == 1 else (u ** (1.0 / k) - 1.0) / (1.0 / k)
            if model["family"] == "polynomial":
                v = _polynomial(u, model)
            elif model["family"] == "kriging":
                v = _sum(_weights(u, model["points"], model["kernel"]) * model["values"]) + model["constant"]
            elif model["family"] == "moving least squares":
                v = _local_fits(u, model)
            else:
                v = _splines(u, model)
            result[begin:begin + block] = _back(v, model["back"])
    return result


def _predict(inputs, model):
    x, single = _rows(inputs)
    values = _predict_rows(x, model)
    return values[0] if single else values


def _gradient(inputs, model):
    x, single = _rows(inputs)
    result = np.zeros_like(x)
    for j, step in enumerate(model["steps"]):
        if step == 0.0:
            continue
        below, above = x.copy(), x.copy()
        below[:, j] -= step
        above[:, j] += step
        result[:, j] = (_predict_rows(above, model) - _predict_rows(below, model)) / step * 0.5
    return result[0] if single else result


def predict(inputs):
    """All responses at one design (m) or n designs (n x m): R, or n x R, in the order of OUTPUTS."""
    x, single = _rows(inputs)
    values = np.stack([_predict_rows(x, model) for model in _MODELS], axis=1)
    return values[0] if single else values


def in_range(inputs):
    """Whether all inputs of each design are in the range of the project's designs; elsewhere
    predictions extrapolate."""
    x, single = _rows(inputs)
    inside = ~((x < LOWER - 1e-8) | (x > UPPER + 1e-8)).any(axis=1)
    return inside[0] if single else inside


def _quotient(a, b):
    return np.where(b != 0.0, a / np.where(b != 0.0, b, 1.0), np.nan)


def _whole_power(x, n):
    result = np.ones(np.broadcast(x, n).shape)
    z = result * x
    while (n > 0.0).any():
        result = np.where(n % 2.0 == 1.0, result * z, result)
        n = np.floor(n / 2.0)
        z = z * z
    return result


def _power(x, y):
    # Whole powers are products; of a negative number there are no others.
    ceil, floor = np.ceil(y), np.floor(y)
    whole = np.where((ceil - y) ** 2 < 2.220446049250313e-16, ceil, floor)
    is_whole = (whole - y) ** 2 < 2.220446049250313e-16
    other = np.where(np.asarray(x) < 0.0, np.nan, np.abs(x) ** y)
    at_zero = np.where(np.asarray(y) < 0.0, np.nan, np.where(np.asarray(y) > 0.0, 0.0, 1.0))
    product = _whole_power(x, np.where(is_whole, np.abs(whole), 0.0))
    value = np.where(is_whole, np.where(whole < 0.0, 1.0 / product, product), other)
    return np.where(np.isnan(y), np.nan, np.where(np.abs(x) < 2.220446049250313e-16, at_zero, value))


def _extreme(better, first, *others):
    for other in others:
        first = np.where(better(other, first), other, first)
    return first
)py";

}  // namespace corvath::exchange
