/* Parallel coordinates of the designs; brushes and ranges as numbers choose some of them. */
function makeParallel(project, quantities, chosenChanged) {
  const {designs} = project;
  const n = designs.ids.length;
  const spans = quantities.map((q) => rangeOf(q.values, q.states || []) || [0, 1]);
  const limits = quantities.map(() => null);  /* [least, most] of the designs to choose */
  let isChosen = new Array(n).fill(true);

  const step = within(1180 / quantities.length, [76, 130]);
  const chart = new Chart(at('parallel'), Math.max(300, step * quantities.length), 360, 'Parallel coordinates',
    {margin: {left: 0, right: 0, top: 36, bottom: 14}, scrolls: true});
  chart.figure.classList.add('wide');
  const place = (q) => step * (q + 0.65);
  const scales = spans.map((span) => d3.scaleLinear(span, [chart.bottom, chart.top]));

  function* draw() {
    const perFrame = 300;  /* lines that are painted without graphics hardware in a frame or two */
    let drawn = 0;
    const context = chart.paint();
    context.lineWidth = 1;
    for (const chosen of [false, true]) {
      context.strokeStyle = color(chosen ? 'accent' : 'pale');
      context.globalAlpha = chosen ? within(100 / n, [0.02, 0.7]) : 0.12;
      const line = d3.line().context(context).defined((value) => value !== null)
        .x((_, q) => place(q)).y((value, q) => scales[q](value));
      for (let d = 0; d < n; ++d) {
        if (isChosen[d] !== chosen) continue;
        context.beginPath();
        line(quantities.map((q) => q.values[d]));
        context.stroke();
        if (++drawn % perFrame === 0) yield nextFrame;
      }
    }
  }

  function choose() {
    isChosen = designs.ids.map((_, d) => limits.every((limit, q) => {
      const value = quantities[q].values[d];
      return !limit || (value !== null && value >= limit[0] && value <= limit[1]);
    }));
    at('chosen').textContent = `${d3.sum(isChosen)} of ${count(n, 'design')} chosen`;
    chart.describe(`Parallel coordinates of ${quantities.length} quantities, ` +
      at('chosen').textContent);
    startJob('parallel', draw());
    chosenChanged();
  }

  const brush = d3.brushY().extent([[-14, chart.top], [14, chart.bottom]]).on('brush end', function (q) {
    if (!d3.event.sourceEvent) return;  /* moved by the fields below */
    const ends = d3.event.selection;
    limits[q] = ends ? [scales[q].invert(ends[1]), scales[q].invert(ends[0])] : null;
    showLimit(q);
    choose();
  });
  const axes = chart.svg.selectAll('.axis').data(d3.range(quantities.length)).join('g').attr('class', 'axis')
    .attr('transform', (q) => `translate(${place(q)},0)`)
    .each(function (q) { d3.select(this).call(setTicks(d3.axisLeft(scales[q]), quantities[q], 6, step / 12)); });
  axes.append('text').attr('class', 'title').attr('y', chart.top - 16)
    .text((q) => shorten(quantities[q].name, step / 7.5)).append('title').text((q) => quantities[q].title);
  axes.append('g').call(brush);

  /* The same by keyboard. */
  const fields = quantities.map((quantity, q) => ['at least', 'at most'].map((word, end) => {
    const field = element('input', {type: 'text', inputmode: 'decimal', size: 8, 'aria-label': `${quantity.name} ${word}`});
    field.addEventListener('change', () => {
      const value = parseNumber(field.value);
      const isBad = field.value.trim() !== '' && Number.isNaN(value);
      field.setAttribute('aria-invalid', String(isBad));
      if (isBad) return;
      const limit = limits[q] || [-Infinity, Infinity];
      limit[end] = Number.isNaN(value) ? [-Infinity, Infinity][end] : value;
      limits[q] = limit.some(Number.isFinite) ? limit : null;
      const ends = limits[q] && limits[q].map((v) => scales[q](within(v, spans[q]))).reverse();
      axes.filter((other) => other === q).select('.selection').each(function () {
        d3.select(this.parentNode).call(brush.move, ends && ends[0] < ends[1] ? ends : null);
      });
      choose();
    });
    return field;
  }));
  function showLimit(q) {
    fields[q].forEach((field, end) => {
      field.value = limits[q] && Number.isFinite(limits[q][end]) ? format(limits[q][end]) : '';
      field.setAttribute('aria-invalid', 'false');
    });
  }
  at('ranges').append(table([{text: 'Quantity'}, {text: 'At least'}, {text: 'At most'}],
    quantities.map((quantity, q) => [rowHead(quantity.title),
      ...fields[q].map((field) => element('td', {}, field))]), 'Ranges of the designs to choose'));

  return {choose, draw, isChosen: (d) => isChosen[d]};
}
