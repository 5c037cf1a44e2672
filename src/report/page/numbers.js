/* Numbers: how they are written and read, and their ranges. */

/* With a decimal point: five figures do for reading. */
function format(value, digits = 5) {
  if (value === null || value === undefined || Number.isNaN(value)) return '\u2013';
  const size = Math.abs(value);
  if (size !== 0 && Number.isFinite(size) && (size >= 1e7 || size < 1e-4))
    return value.toExponential(Math.max(0, digits - 2));
  return String(Number(value.toPrecision(digits)));
}

/* A number as it is written in English or in German; NaN for anything else. The last mark is the
   decimal one, so a single point or comma always is: 1,500 is one and a half. Marks before it, a
   mark that is repeated, spaces and apostrophes group three digits each. */
function parseNumber(text) {
  const plain = text.trim().replace(/\u2212/g, '-').replace(/[\s\u00a0\u202f\u2019]/g, "'");
  const parts = /^([-+]?)([\d.,']*)(e[-+]?\d+)?$/i.exec(plain);
  if (!parts || !/\d/.test(parts[2])) return NaN;
  const [, sign, digits, exponent = ''] = parts;
  const last = Math.max(digits.lastIndexOf('.'), digits.lastIndexOf(','));
  const isGroup = last >= 0 && digits.indexOf(digits[last]) !== last;  /* 1.234.567 */
  const whole = last < 0 || isGroup ? digits : digits.slice(0, last);
  const fraction = last < 0 || isGroup ? '' : digits.slice(last + 1);
  const grouped = /^\d{1,3}(([.,'])\d{3}(\2\d{3})*)?$/;
  if (!(/^\d*$/.test(whole) || grouped.test(whole)) || !/^\d*$/.test(fraction)) return NaN;
  return Number(`${sign}${whole.replace(/\D/g, '')}.${fraction}${exponent}`);
}

/* The finite values' range, widened where it is a point; null without any. */
function rangeOf(...lists) {
  let low = Infinity;
  let high = -Infinity;
  for (const list of lists)
    for (const value of list)
      if (value !== null && Number.isFinite(value)) {
        if (value < low) low = value;
        if (value > high) high = value;
      }
  if (low > high) return null;
  if (low < high) return [low, high];
  const margin = Math.abs(low) * 0.05 || 1;
  return [low - margin, high + margin];
}

/* A little room around the values. */
function roomy([low, high]) {
  const margin = 0.03 * (high - low);
  return [low - margin, high + margin];
}

const within = (value, [low, high]) => Math.min(Math.max(value, low), high);

const count = (n, word) => `${n} ${word}${n === 1 ? '' : 's'}`;

function shorten(text, length) {
  const all = Array.from(String(text).replace(/[\s\u2028\u2029]+/g, ' '));
  return all.length <= length ? all.join('') : all.slice(0, Math.max(1, length - 1)).join('') + '\u2026';
}
