/* Elements, numbers and plots on canvas. Texts of the project get into the document as text nodes
   alone, or onto a canvas. */

function element(name, attributes, ...children) {
  const node = document.createElement(name);
  for (const [key, value] of Object.entries(attributes || {})) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

/* In the reader's own notation: five figures do for reading. */
function format(value, digits = 5) {
  if (value === null || value === undefined || Number.isNaN(value)) return '\u2013';
  const size = Math.abs(value);
  if (size !== 0 && Number.isFinite(size) && (size >= 1e7 || size < 1e-4))
    return value.toExponential(digits - 2);
  return String(Number(value.toPrecision(digits)));
}

/* A number with a decimal point or a decimal comma; NaN for anything else. */
function parseNumber(text) {
  const plain = text.trim().replace(/\u2212/g, '-');
  return /^[-+]?(\d+[.,]?\d*|[.,]\d+)(e[-+]?\d+)?$/i.test(plain) ? Number(plain.replace(',', '.')) : NaN;
}

function table(head, rows, caption) {
  const cell = (name, content, number) => {
    const node = content instanceof Node ? content : element(name, {}, String(content));
    if (number) node.classList.add('number');
    return node;
  };
  const body = element('tbody');
  for (const row of rows)
    body.append(element('tr', {}, ...row.map((content, i) => cell('td', content, head[i].number))));
  const heads = head.map((h) => cell('th', element('th', {scope: 'col'}, h.text), h.number));
  const result = element('table', {}, element('thead', {}, element('tr', {}, ...heads)), body);
  if (caption) result.prepend(element('caption', {class: 'unseen'}, caption));
  return result;
}

function color(name) {
  return getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
}

/* Work in pieces, so that the page stays alive: runs a generator for some milliseconds at a time. A
   new job under the same name ends the old one. */
const jobs = new Map();
function startJob(name, generator) {
  const job = {};
  jobs.set(name, job);
  const step = () => {
    if (jobs.get(name) !== job) return;
    const end = performance.now() + 12;
    while (performance.now() < end)
      if (generator.next().done) {
        jobs.delete(name);
        return;
      }
    setTimeout(step, 0);
  };
  step();
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
  if (low === high) {
    const margin = Math.abs(low) * 0.05 || 1;
    return [low - margin, high + margin];
  }
  return [low, high];
}

/* A little room around the values. */
function roomy(range) {
  const margin = 0.03 * (range[1] - range[0]);
  return [range[0] - margin, range[1] + margin];
}

function ticks(low, high, count) {
  const rough = (high - low) / count;
  const base = Math.pow(10, Math.floor(Math.log10(rough)));
  const step = [1, 2, 5, 10].map((f) => f * base).find((s) => s >= rough * 0.999) || base;
  const result = [];
  for (let i = Math.ceil(low / step - 1e-9); i * step <= high + step * 1e-9 && result.length < 50; ++i)
    result.push(i * step);
  return result;
}

/* A plot with axes. `label` says what is to be seen to those who cannot see it. */
class Plot {
  constructor(parent, width, height, label, caption) {
    this.width = width;
    this.height = height;
    this.canvas = element('canvas', {role: 'img', 'aria-label': label});
    const figure = element('figure', {}, this.canvas);
    figure.style.maxWidth = width + 'px';
    if (caption) figure.append(element('figcaption', {}, caption));
    parent.append(figure);
    this.left = 58;
    this.right = width - 10;
    this.top = 10;
    this.bottom = height - 38;
    this.context = this.canvas.getContext('2d');
  }

  begin(xRange, yRange) {
    const scale = window.devicePixelRatio || 1;
    this.canvas.width = Math.round(this.width * scale);
    this.canvas.height = Math.round(this.height * scale);
    this.canvas.style.width = this.width + 'px';
    this.context.setTransform(scale, 0, 0, scale, 0, 0);
    this.context.clearRect(0, 0, this.width, this.height);
    this.xRange = xRange;
    this.yRange = yRange;
  }

  x(value) {
    return this.left + (value - this.xRange[0]) / (this.xRange[1] - this.xRange[0]) * (this.right - this.left);
  }
  y(value) {
    return this.bottom - (value - this.yRange[0]) / (this.yRange[1] - this.yRange[0]) * (this.bottom - this.top);
  }

  axes(xTitle, yTitle) {
    const c = this.context;
    c.font = '12px system-ui, sans-serif';
    c.strokeStyle = color('line');
    c.fillStyle = color('soft');
    c.lineWidth = 1;
    c.strokeRect(this.left, this.top, this.right - this.left, this.bottom - this.top);
    c.textAlign = 'center';
    c.textBaseline = 'top';
    for (const tick of ticks(...this.xRange, Math.max(2, (this.right - this.left) / 80)))
      c.fillText(format(tick, 4), this.x(tick), this.bottom + 5);
    c.fillText(shorten(xTitle, 40), (this.left + this.right) / 2, this.bottom + 21);
    c.textAlign = 'right';
    c.textBaseline = 'middle';
    for (const tick of ticks(...this.yRange, Math.max(2, (this.bottom - this.top) / 40)))
      c.fillText(format(tick, 4), this.left - 4, this.y(tick));
    if (!yTitle) return;
    c.save();
    c.translate(8, (this.top + this.bottom) / 2);
    c.rotate(-Math.PI / 2);
    c.textAlign = 'center';
    c.fillText(shorten(yTitle, 40), 0, 0);
    c.restore();
  }

  clip(draw) {
    this.context.save();
    this.context.beginPath();
    this.context.rect(this.left, this.top, this.right - this.left, this.bottom - this.top);
    this.context.clip();
    draw(this.context);
    this.context.restore();
  }

  line(xs, ys, stroke, width = 2) {
    this.clip((c) => {
      c.strokeStyle = stroke;
      c.lineWidth = width;
      c.beginPath();
      let pen = false;
      xs.forEach((x, i) => {
        if (!Number.isFinite(ys[i])) {
          pen = false;
          return;
        }
        if (pen) c.lineTo(this.x(x), this.y(ys[i]));
        else c.moveTo(this.x(x), this.y(ys[i]));
        pen = true;
      });
      c.stroke();
    });
  }

  /* Counts of equal parts of the x range. */
  bars(counts, fill) {
    this.clip((c) => {
      c.fillStyle = fill;
      const width = (this.right - this.left) / counts.length;
      counts.forEach((count, i) =>
        c.fillRect(this.left + i * width, this.y(count), width - 1, this.bottom - this.y(count)));
    });
  }

  dots(xs, ys, fill, radius = 2.5) {
    this.clip((c) => {
      c.fillStyle = fill;
      for (let i = 0; i < xs.length; ++i) {
        if (xs[i] === null || ys[i] === null || !Number.isFinite(ys[i])) continue;
        c.beginPath();
        c.arc(this.x(xs[i]), this.y(ys[i]), radius, 0, 2 * Math.PI);
        c.fill();
      }
    });
  }
}

function shorten(text, length) {
  const all = Array.from(text.replace(/[\s\u2028\u2029]+/g, ' '));
  return all.length <= length ? all.join('') : all.slice(0, length - 1).join('') + '\u2026';
}

/* A colour between dark blue and yellow, even in lightness, for a share from 0 to 1. */
const SCALE = [[68, 1, 84], [65, 68, 135], [42, 120, 142], [34, 168, 132], [122, 209, 81], [253, 231, 37]];
function shade(share) {
  const at = Math.min(Math.max(share, 0), 1) * (SCALE.length - 1);
  const i = Math.min(Math.floor(at), SCALE.length - 2);
  return SCALE[i].map((low, k) => Math.round(low + (SCALE[i + 1][k] - low) * (at - i)));
}
