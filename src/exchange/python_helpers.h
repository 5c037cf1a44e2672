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
        return np.maximum((squared / parameters[0] + 1e-5) ** -2.0 - 1.00001 ** -2.0, 0.0)
    factor, count = parameters
    nearest = np.partition(squared, count - 1, axis=1)[:, count - 1]
    return _exp(squared * factor / nearest[:, None])


def _solve(normal, right):
    """Symmetric systems, one for each row, by L D L'; what a vanishing pivot leaves open is 0."""
    n, p = right.shape
    rows = np.arange(n)[:, None]
    order = np.argsort(-np.abs(np.einsum("nii->ni", normal)), axis=1, kind="stable")
    a = normal[rows[:, :, None], order[:, :, None], order[:, None, :]]
    y = right[rows, order]
    lower = np.zeros_like(a)
    d = np.zeros((n, p))
    for k in range(p):
        scaled = d[:, :k] * lower[:, k, :k]
        d[:, k] = a[:, k, k] - np.einsum("nj,nj->n", lower[:, k, :k], scaled)
        column = a[:, k + 1:, k] - np.einsum("nij,nj->ni", lower[:, k + 1:, :k], scaled)
        pivot = np.where(d[:, k] != 0.0, d[:, k], 1.0)
        lower[:, k + 1:, k] = column / pivot[:, None]
    for i in range(p):
        y[:, i] -= np.einsum("nk,nk->n", lower[:, i, :i], y[:, :i])
    usable = np.abs(d) > 2.2250738585072014e-308
    y = np.where(usable, y / np.where(usable, d, 1.0), np.where(np.isnan(d), np.nan, 0.0))
    for i in reversed(range(p)):
        y[:, i] -= np.einsum("nk,nk->n", lower[:, i + 1:, i], y[:, i + 1:])
    result = np.empty_like(y)
    result[rows, order] = y
    return result


def _local_fits(u, model):
    weights = _weights(u, model["points"], model["kernel"])
    if model["powers"] is None:
        return weights @ model["values"] / weights.sum(axis=1)
    basis = _basis(model["points"], model["powers"])
    p = basis.shape[1]
    if (model["values"] == model["values"][0]).all():
        v = np.full(len(u), model["values"][0])
    else:
        products = basis[:, :, None] * basis[:, None, :]
        normal = (weights @ products.reshape(len(basis), p * p)).reshape(len(u), p, p)
        right = weights @ (basis * model["values"][:, None])
        v = np.einsum("np,np->n", _basis(u, model["powers"]), _solve(normal, right))
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
