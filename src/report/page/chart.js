/* Charts by d3: axes, lines and areas as SVG, which prints well and follows the colours of the page;
   what there may be thousands of is drawn on a canvas below. */

function color(name) {
  return getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
}

/* Ticks of a quantity: its states, as many as there is room for, else round numbers with the digits
   that tell them apart. */
function setTicks(axis, quantity, most) {
  if (quantity.states) {
    const every = Math.ceil(quantity.states.length / most);
    return axis.tickValues(quantity.states.filter((_, i) => i % every === 0))
      .tickFormat((value) => shorten(quantity.text(value, 4), 12));
  }
  const [low, high] = axis.scale().domain();
  const digits = d3.precisionRound(d3.tickStep(low, high, most), Math.max(Math.abs(low), Math.abs(high)));
  return axis.ticks(most).tickFormat((value) => format(value, Math.max(2, digits)));
}

class Chart {
  /* `label` says what is to be seen to those who cannot see it. */
  constructor(parent, width, height, label, {caption, margin} = {}) {
    const {left, right, top, bottom} = {left: 64, right: 14, top: 10, bottom: 42, ...margin};
    Object.assign(this, {width, height, left, top, right: width - right, bottom: height - bottom});
    const figure = d3.select(parent).append('figure').style('width', width + 'px');
    const frame = figure.append('div').attr('class', 'chart').style('aspect-ratio', `${width} / ${height}`);
    this.canvas = frame.append('canvas').attr('aria-hidden', 'true').node();
    this.svg = frame.append('svg').attr('viewBox', `0 0 ${width} ${height}`).attr('role', 'img');
    if (caption) figure.append('figcaption').text(caption);
    this.describe(label);
    const clip = 'clip-' + Chart.number++;
    this.svg.append('clipPath').attr('id', clip).append('rect').attr('x', left).attr('y', top)
      .attr('width', this.right - left).attr('height', this.bottom - top);
    this.marks = this.svg.append('g').attr('clip-path', `url(#${clip})`);
  }

  describe(text) {
    this.svg.attr('aria-label', text);
  }

  /* Sets the scales and draws the axes of two quantities: `title`, `range`, and of discrete ones
     `states` and `text`. */
  begin(x, y) {
    this.x = d3.scaleLinear(x.range, [this.left, this.right]);
    this.y = d3.scaleLinear(y.range, [this.bottom, this.top]);
    const axis = (name, tag) => this.part(this.svg, tag, name);
    axis('axis across', 'g').attr('transform', `translate(0,${this.bottom})`)
      .call(setTicks(d3.axisBottom(this.x), x, Math.max(2, (this.right - this.left) / 70)));
    axis('axis upwards', 'g').attr('transform', `translate(${this.left},0)`)
      .call(setTicks(d3.axisLeft(this.y), y, Math.max(2, (this.bottom - this.top) / 36)));
    axis('title across', 'text').attr('x', (this.left + this.right) / 2).attr('y', this.height - 6)
      .text(shorten(x.title, (this.right - this.left) / 7));
    axis('title upwards', 'text').attr('transform', `translate(13,${(this.top + this.bottom) / 2}) rotate(-90)`)
      .text(shorten(y.title, (this.bottom - this.top) / 7));
    return this;
  }

  /* The one element of a kind, which is made when it is first asked for. */
  part(parent, tag, name) {
    const found = parent.select('.' + name.replace(/ /g, '.'));
    return found.empty() ? parent.append(tag).attr('class', name) : found;
  }

  line(name, xs, ys) {
    this.part(this.marks, 'path', name).attr('d', d3.line().defined((_, i) => Number.isFinite(ys[i]))
      .x((x) => this.x(x)).y((_, i) => this.y(ys[i]))(xs));
  }

  band(xs, low, high) {
    this.part(this.marks, 'path', 'band').attr('d', d3.area()
      .defined((_, i) => Number.isFinite(low[i]) && Number.isFinite(high[i]))
      .x((x) => this.x(x)).y0((_, i) => this.y(low[i])).y1((_, i) => this.y(high[i]))(xs));
  }

  /* Vertical lines, each between two values. */
  rules(name, xs, low, high) {
    const rows = xs.map((x, i) => [x, low[i], high[i]]).filter((row) => row.every(Number.isFinite));
    this.marks.selectAll('.' + name).data(rows).join('line').attr('class', name)
      .attr('x1', ([x]) => this.x(x)).attr('x2', ([x]) => this.x(x))
      .attr('y1', (row) => this.y(row[1])).attr('y2', (row) => this.y(row[2]));
  }

  points(name, xs, ys, radius = 2.5) {
    const rows = xs.map((x, i) => [x, ys[i]]).filter(([x, y]) => Number.isFinite(x) && Number.isFinite(y));
    this.marks.selectAll('.' + name).data(rows).join('circle').attr('class', name)
      .attr('cx', ([x]) => this.x(x)).attr('cy', ([, y]) => this.y(y)).attr('r', radius);
  }

  bars(name, bins) {
    this.marks.selectAll('.' + name).data(bins).join('rect').attr('class', name)
      .attr('x', (bin) => this.x(bin.x0)).attr('width', (bin) => Math.max(0.5, this.x(bin.x1) - this.x(bin.x0) - 1))
      .attr('y', (bin) => this.y(bin.length)).attr('height', (bin) => this.bottom - this.y(bin.length));
  }

  /* The empty canvas, in the chart's coordinates and fine enough for paper. */
  paint() {
    const scale = Math.max(2, window.devicePixelRatio || 1);
    this.canvas.width = Math.round(this.width * scale);
    this.canvas.height = Math.round(this.height * scale);
    const context = this.canvas.getContext('2d');
    context.scale(scale, scale);
    return context;
  }

  dots(context, xs, ys, fill, radius) {
    context.fillStyle = fill;
    for (let i = 0; i < xs.length; ++i) {
      if (xs[i] === null || ys[i] === null || !Number.isFinite(ys[i])) continue;
      context.beginPath();
      context.arc(this.x(xs[i]), this.y(ys[i]), radius, 0, 2 * Math.PI);
      context.fill();
    }
  }
}
Chart.number = 0;

/* How often values are in equal parts of a range, or of a discrete quantity at its states. */
function histogram(values, {range: [low, high], states}) {
  const known = values.filter((value) => value !== null && Number.isFinite(value));
  const parts = within(Math.ceil(Math.sqrt(values.length)), [5, 40]);
  const limits = states ? d3.pairs(states, (a, b) => (a + b) / 2)
    : d3.range(1, parts).map((i) => low + (high - low) * i / parts);
  return d3.bin().domain([low, high]).thresholds(limits)(known);
}
const mostOf = (bins) => Math.max(1, d3.max(bins, (bin) => bin.length)) * 1.05;
