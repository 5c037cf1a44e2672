'use strict';
/* The models of a project from their description: what docs/model-json.md says, in the same order of
   operations as the library, so that only rounding differs. */

/* 2^n exactly, by n + 1000. */
const POWERS_OF_TWO = new Float64Array(2024);
POWERS_OF_TWO[1000] = 1;
for (let n = 1; n < 1024; ++n) POWERS_OF_TWO[1000 + n] = 2 * POWERS_OF_TWO[999 + n];
for (let n = 1; n <= 1000; ++n) POWERS_OF_TWO[1000 - n] = POWERS_OF_TWO[1001 - n] / 2;

/* Of numbers up to 709; rounds as the library does: 2^n exp(r), x = n ln 2 + r. */
function kernelExp(x) {
  if (x < -746) return 0;
  if (!(x <= 709)) return x > 709 ? Infinity : x;
  const n = (x * 1.4426950408889634 + 6755399441055744) - 6755399441055744;
  const r = (x - n * 0.6931471805592082) - n * 7.371002565167799e-13;
  let q = 2.510038549551032e-08;
  q = q * r + 2.7620088445409746e-07;
  q = q * r + 2.7557268459997064e-06;
  q = q * r + 2.4801521295954376e-05;
  q = q * r + 0.00019841269863053618;
  q = q * r + 0.0013888888917213717;
  q = q * r + 0.008333333333330062;
  q = q * r + 0.04166666666662413;
  q = q * r + 0.16666666666666669;
  q = q * r + 0.5;
  const mantissa = 1 + (r + r * r * q);
  if (n >= -1000) return mantissa * POWERS_OF_TWO[n + 1000];
  return mantissa * POWERS_OF_TWO[n + 1128] * POWERS_OF_TWO[872];  // rounds once, below 1e-308
}

/* Sets u to the coordinates of the inputs x. */
function coordinates(model, x, u) {
  for (let j = 0; j < u.length; ++j) u[j] = x[model.inputs[j]] * model.scale[j] + model.offset[j];
  if (model.power === 0) u[0] = Math.log(u[0]);
  else if (model.power === 1) u[0] -= 1;
  else if (model.power !== undefined)
    u[0] = (Math.pow(u[0], 1 / model.power) - 1) / (1 / model.power);
}

function makeModel(model) {
  const n = model.points ? model.points.length : 0;
  const r = model.inputs.length;
  const points = Float64Array.from(model.points ? model.points.flat() : []);
  const values = Float64Array.from(model.values || []);
  const u = new Float64Array(r);

  function squared(i) {
    let sum = 0;
    for (let j = 0; j < r; ++j) {
      const d = u[j] - points[i * r + j];
      sum += d * d;
    }
    return sum;
  }

  /* weight(i) of point i at u, after prepare(). */
  function makeKernel(kernel) {
    if (kernel.kind === 'regularised') {
      return {prepare() {}, weight(i) {
        const ratio = squared(i) / kernel.squared_radius + 1e-5;
        const w = 1 / (ratio * ratio) - 1 / (1.00001 * 1.00001);
        return w < 0 ? 0 : w;
      }};
    }
    if (kernel.kind === 'nodal') {
      const all = new Float64Array(n);
      let nearest = 0;
      return {prepare() {
        for (let i = 0; i < n; ++i) all[i] = squared(i);
        nearest = all.slice().sort()[kernel.count - 1];
      }, weight: (i) => kernelExp(all[i] * kernel.factor / nearest)};
    }
    const f = kernel.factors;
    if (f.length === 1) return {prepare() {}, weight: (i) => kernelExp(squared(i) * f[0])};
    return {prepare() {}, weight(i) {
      let sum = 0;
      for (let j = 0; j < r; ++j) {
        const d = u[j] - points[i * r + j];
        sum += d * d * f[j];
      }
      return kernelExp(sum);
    }};
  }

  const kernel = model.kernel ? makeKernel(model.kernel) : null;
  const power = (x, e) => e === 1 ? x : e === 2 ? x * x : Math.pow(x, e);

  function polynomial() {
    let v = model.constant;
    let next = 0;
    for (const [j, e] of model.powers) v += model.coefficients[next++] * power(u[j], e);
    for (const [i, j] of model.products) v += model.coefficients[next++] * (u[i] * u[j]);
    return v;
  }

  function kriging() {
    kernel.prepare();
    let v = 0;
    // In the library's order, so that weights that nearly cancel leave the same.
    for (let first = 0; first < n; first += 128) {
      const partial = new Float64Array(8);
      for (let i = first; i < Math.min(n, first + 128); ++i)
        partial[i % 8] += values[i] * kernel.weight(i);
      v += partial.reduce((a, b) => a + b, 0);
    }
    return v + model.constant;
  }

  function splines() {
    let v = 0;
    for (let j = 0; j < r; ++j) v += u[j] * model.coefficients[j];
    v += model.constant;
    for (let i = 0; i < n; ++i) {
      const s = squared(i);
      if (s !== 0) v += values[i] * (0.5 * s * Math.log(s));
    }
    return v;
  }

  function average() {
    kernel.prepare();
    let v = 0;
    let sum = 0;
    for (let i = 0; i < n; ++i) {
      const w = kernel.weight(i);
      v += w * values[i];
      sum += w;
    }
    return v / sum;
  }

  const p = model.powers ? model.powers.length + 1 : 1;
  const basis = new Float64Array(n * p);
  if (model.family === 'moving least squares' && model.powers)
    for (let i = 0; i < n; ++i) {
      basis[i * p] = 1;
      model.powers.forEach(([j, e], t) => { basis[i * p + t + 1] = power(points[i * r + j], e); });
    }
  const constant = values.every((v) => v === values[0]);

  function localFit() {
    kernel.prepare();
    const normal = new Float64Array(p * p);
    const right = new Float64Array(p);
    let reach = 0;
    for (let i = 0; i < n; ++i) {
      const w = kernel.weight(i);
      if (w > 1e-5) ++reach;
      if (w === 0 || constant) continue;
      const b = i * p;
      for (let row = 0; row < p; ++row) {
        for (let column = 0; column <= row; ++column)
          normal[row * p + column] += basis[b + row] * basis[b + column] * w;
        right[row] += basis[b + row] * values[i] * w;
      }
    }
    if (reach < p) return NaN;
    if (constant) return values[0];
    const at = [1, ...model.powers.map(([j, e]) => power(u[j], e))];
    return fit(p, normal, right, at);
  }

  const compute = {
    'polynomial': polynomial,
    'kriging': kriging,
    'thin plate splines': splines,
    'moving least squares': model.powers ? localFit : average
  }[model.family];

  return (x) => {
    coordinates(model, x, u);
    let v = compute();
    for (const step of model.back) {
      if (step.kind === 'scale') v = v / step.scale + step.offset;
      else if (step.kind === 'limits') {
        if (step.lower !== null && v < step.lower) v = step.lower;
        if (step.upper !== null && v > step.upper) v = step.upper;
      } else if (step.k === 0) v = Math.exp(v);
      else if (step.k === 1) v += 1;
      else v = Math.pow(v * (1 / step.k) + 1, step.k);
    }
    return v;
  };
}

/* The fit at a point with the terms `at`, by L D L' in the given order, rounded as in the library.
   With `definite` it is NaN where a pivot is not above 1e-10 of its diagonal entry; without, what a
   vanishing pivot leaves open is 0. `normal` holds the lower triangle. */
function solve(n, normal, right, at, order, definite) {
  const a = new Float64Array(n * n);
  const z = new Float64Array(n);
  for (let i = 0; i < n; ++i) {
    for (let j = 0; j <= i; ++j)
      a[i * n + j] = normal[Math.max(order[i], order[j]) * n + Math.min(order[i], order[j])];
    z[i] = right[order[i]];
  }
  for (let j = 0; j < n; ++j) {
    const pivot = a[j * n + j];
    if (definite && !(pivot > normal[order[j] * (n + 1)] * 1e-10)) return NaN;
    const vanishes = !definite && Math.abs(pivot) <= 2.2250738585072014e-308;
    const inverse = vanishes ? 0 : 1 / pivot;
    for (let i = j + 1; i < n; ++i) {
      const factor = a[i * n + j] * inverse;
      for (let k = j + 1; k <= i; ++k) a[i * n + k] -= factor * a[k * n + j];
      z[i] -= factor * z[j];
    }
    a[j * n + j] = inverse;
  }
  let sum = 0;
  for (let j = n - 1; j >= 0; --j) {
    for (let i = j + 1; i < n; ++i) z[j] -= a[i * n + j] * z[i];
    z[j] *= a[j * n + j];
    sum += z[j] * at[order[j]];
  }
  return sum;
}

/* The same in the order of the terms, or else by the size of the diagonal. */
function fit(n, normal, right, at) {
  const order = Array.from({length: n}, (_, i) => i);
  const v = solve(n, normal, right, at, order, true);
  if (!Number.isNaN(v)) return v;
  for (let k = 0; k < n; ++k) {
    let pivot = k;
    for (let i = k + 1; i < n; ++i)
      if (Math.abs(normal[order[i] * (n + 1)]) > Math.abs(normal[order[pivot] * (n + 1)])) pivot = i;
    [order[k], order[pivot]] = [order[pivot], order[k]];
  }
  return solve(n, normal, right, at, order, false);
}

/* The local root mean square error of a response; NaN where it is not known. */
function makeError(response) {
  const error = response.error;
  if (!error) return () => NaN;
  if (!error.factor) return () => error.everywhere;
  const model = response.model;
  const points = error.points || model.points;
  return (x) => {
    const u = new Array(model.inputs.length);
    coordinates(model, x, u);
    let sum = 0;
    let total = 0;
    for (let i = 0; i < points.length; ++i) {
      let s = 0;
      for (let j = 0; j < u.length; ++j) s += (u[j] - points[i][j]) * (u[j] - points[i][j]);
      const w = kernelExp(error.factor * s);
      sum += w * error.residuals[i] * error.residuals[i];
      total += w;
    }
    return Math.sqrt(sum / total);
  };
}

const EPS = 2.220446049250313e-16;
const OPERATORS = {
  '+': (...a) => a.reduce((x, y) => x + y),
  '-': (x, y) => x - y,
  '*': (x, y) => x * y,
  '/': (x, y) => y !== 0 ? x / y : NaN,
  '^': (x, y) => {
    if (Math.abs(x) < EPS) return y < 0 ? NaN : y > 0 ? 0 : y === 0 ? 1 : NaN;
    const up = Math.ceil(y);
    const whole = (up - y) * (up - y) < EPS ? up : Math.floor(y);
    if (!((whole - y) * (whole - y) < EPS)) return x < 0 ? NaN : Math.pow(x, y);
    let result = 1;
    for (let n = Math.abs(whole), z = x; n > 0; n = Math.floor(n / 2), z *= z)
      if (n % 2 === 1) result *= z;
    return whole < 0 ? 1 / result : result;
  },
  'negate': (x) => -x,
  'ln': Math.log,
  'log': (x) => Math.log(x) * 0.4342944819032518,
  'min': (...a) => a.reduce((x, y) => y < x ? y : x),
  'max': (...a) => a.reduce((x, y) => y > x ? y : x)
};
for (const name of ['abs', 'sqrt', 'exp', 'sin', 'cos', 'tan', 'asin', 'acos', 'atan', 'sinh', 'cosh',
  'tanh', 'floor', 'ceil']) OPERATORS[name] = Math[name];

/* All models of a document: predict(x) gives the responses, criteria(x, outputs) the criteria,
   response(k, x) and error(k, x) those of one response. */
function makeStudy(document) {
  const models = document.responses.map((response) => makeModel(response.model));
  const errors = document.responses.map(makeError);
  function evaluate(tree, x, outputs) {
    if (typeof tree === 'number') return tree;
    if (Array.isArray(tree))
      return OPERATORS[tree[0]](...tree.slice(1).map((part) => evaluate(part, x, outputs)));
    if ('input' in tree) return x[tree.input];
    if ('response' in tree) return outputs[tree.response];
    return evaluate(document.criteria[tree.criterion].value, x, outputs);
  }
  return {
    predict: (x) => models.map((model) => model(x)),
    response: (k, x) => models[k](x),
    error: (k, x) => errors[k](x),
    criteria: (x, outputs) => document.criteria.map((c) => evaluate(c.value, x, outputs))
  };
}

if (typeof module !== 'undefined') module.exports = {makeStudy};
