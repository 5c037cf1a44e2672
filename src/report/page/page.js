/* The page: sections filled from the data, and what happens when the reader acts. */
(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const {models, designs} = data;
  const {inputs, responses, criteria} = models;
  const study = makeStudy(models);
  const at = (id) => document.getElementById(id);
  const unitOf = (entry) => entry.unit ? ` [${entry.unit}]` : '';
  const titleOf = (entry) => entry.name + unitOf(entry);

  /* The range of an input: of the designs, or around its reference value. */
  const ranges = inputs.map((input) =>
    rangeOf([input.lower, input.upper]) || rangeOf([input.reference === null ? 0 : input.reference]));
  const within = (value, [low, high]) => Math.min(Math.max(value, low), high);
  const start = inputs.map((input, j) => {
    const [low, high] = ranges[j];
    const value = input.reference === null ? (low + high) / 2 : within(input.reference, [low, high]);
    if (!input.states || input.states.length === 0) return value;
    return input.states.reduce((a, b) => Math.abs(b - value) < Math.abs(a - value) ? b : a);
  });
  const point = start.slice();
  let shown = 0;

  function addOptions(select, entries, chosen) {
    entries.forEach((entry, i) => select.append(element('option', {value: i}, titleOf(entry))));
    select.value = String(chosen);
  }

  /* Overview */

  function fillOverview() {
    const count = (n, word) => `${n} ${word}${n === 1 ? '' : 's'}`;
    document.title = models.project.name;
    at('title').textContent = models.project.name;
    at('subtitle').textContent = [count(responses.length, 'response'), count(inputs.length, 'input'),
      count(designs.ids.length, 'design')].join(', ');
    at('origin').textContent = `Made by ${models.made_by}. SHA-512 of the project: ${models.project.sha512}`;

    at('cops').append(table(
      [{text: 'Response'}, {text: 'CoP', number: true}, ...inputs.map((i) => ({text: i.name, number: true}))],
      responses.map((r) => [element('th', {scope: 'row'}, titleOf(r)),
        shareCell(r.cop, 4), ...r.single_cops.map((share) => shareCell(share))]),
      'Coefficients of prognosis of each response, by input'));

    const random = data.distributions.some((text) => text);
    const head = [{text: 'Name'}, {text: 'Unit'}, {text: 'Lower', number: true},
      {text: 'Upper', number: true}, {text: 'Reference', number: true}];
    if (random) head.push({text: 'Distribution'});
    at('inputs').append(table(head, inputs.map((input, j) => {
      const row = [element('th', {scope: 'row'}, input.name), input.unit || '', format(input.lower),
        format(input.upper), format(input.reference)];
      if (random) row.push(data.distributions[j]);
      return row;
    }), 'Inputs with the range of the designs'));

    const notes = [...data.notes, ...models.responses_left_out.map((e) => `The response ${e.name} is not here: ${e.reason}.`),
      ...models.criteria_left_out.map((e) => `The criterion ${e.name} is not here: ${e.reason}.`)];
    if (notes.length > 0)
      at('notes').append(element('h3', {}, 'Notes'), element('ul', {}, ...notes.map((n) => element('li', {}, n))));
  }

  /* Predict: sliders */

  const controls = inputs.map((input, j) => {
    const [low, high] = ranges[j];
    const states = input.states && input.states.length > 0 ? input.states : null;
    const id = 'input-' + j;
    const slider = element('input', states ? {type: 'range', id, min: 0, max: states.length - 1, step: 1}
      : {type: 'range', id, min: low, max: high, step: 'any'});
    const field = element('input', {type: 'text', inputmode: 'decimal', autocomplete: 'off',
      'aria-label': titleOf(input) + ', as a number'});
    slider.addEventListener('input', () => {
      point[j] = states ? states[Number(slider.value)] : Number(slider.value);
      show(false);
      changed();
    });
    slider.addEventListener('keydown', (event) => {  /* a step any browser takes as too small */
      const step = {ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageDown: -10, PageUp: 10}[event.key];
      if (!step || states) return;
      event.preventDefault();
      point[j] = within(Number(slider.value) + step * (high - low) / 100, [low, high]);
      show(false);
      changed();
    });
    field.addEventListener('input', () => {
      const value = parseNumber(field.value);
      field.setAttribute('aria-invalid', String(Number.isNaN(value)));
      if (Number.isNaN(value)) return;
      point[j] = value;
      show(true);
      changed();
    });
    field.addEventListener('change', () => {
      if (field.getAttribute('aria-invalid') === 'true') {
        field.setAttribute('aria-invalid', 'false');
        show(false);
      }
    });
    function show(typing) {
      slider.value = states ? String(states.reduce((best, s, i) =>
        Math.abs(s - point[j]) < Math.abs(states[best] - point[j]) ? i : best, 0)) : String(point[j]);
      slider.setAttribute('aria-valuetext', format(point[j]) + unitOf(input));
      if (!typing) field.value = format(point[j], 6);
    }
    at('sliders').append(element('div', {class: 'input'},
      element('label', {for: id}, titleOf(input)), slider, field));
    return {show};
  });
  at('sliders').addEventListener('submit', (event) => event.preventDefault());
  const back = element('button', {type: 'button'}, 'Reference values');
  back.addEventListener('click', () => {
    start.forEach((value, j) => { point[j] = value; });
    controls.forEach((control) => control.show(false));
    changed();
  });
  at('sliders').append(back);

  /* Predict: answers */

  function fillAnswers() {
    const values = study.predict(point);
    const limits = study.criteria(point, values);
    const rows = responses.map((r, k) => [element('th', {scope: 'row'}, titleOf(r)), format(values[k]),
      '\u00b1 ' + format(study.error(k, point), 2)]);
    const outside = inputs.filter((input, j) => input.lower !== null && input.upper !== null &&
      (point[j] < input.lower - 1e-8 || point[j] > input.upper + 1e-8));
    const nodes = [table([{text: 'Response'}, {text: 'Prediction', number: true},
      {text: 'Error', number: true}], rows, 'Predictions at the point')];
    const violated = criteria.filter((c, i) => c.limit && limits[i] < 0);
    if (criteria.length > 0)
      nodes.push(element('h3', {}, 'Criteria'), table([{text: 'Criterion'}, {text: 'Value', number: true},
        {text: ''}], criteria.map((c, i) => {
        const name = element('th', {scope: 'row', title: c.text}, c.name);
        const state = !c.limit ? '' : limits[i] < 0 ? element('td', {class: 'bad'}, '\u2717 violated')
          : limits[i] >= 0 ? element('td', {class: 'good'}, '\u2713 kept') : 'unknown';
        const value = element('td', c.limit && limits[i] < 0 ? {class: 'bad'} : {}, format(limits[i]));
        return [name, value, state];
      }), 'Criteria at the point'));
    if (outside.length > 0)
      nodes.push(element('p', {class: 'bad'}, 'Outside the range of the designs: ' +
        outside.map((input) => input.name).join(', ')));
    at('answers').replaceChildren(...nodes);
    clearTimeout(fillAnswers.timer);
    fillAnswers.timer = setTimeout(() => {
      at('spoken').textContent = `${responses[shown].name} ${format(values[shown])}` +
        (criteria.some((c) => c.limit) ? `, limits violated: ${violated.map((c) => c.name).join(', ') || 'none'}` : '');
    }, 600);
  }

  /* Predict: slices */

  const SLICE_STEPS = 40;
  const slicePlots = inputs.map((input) =>
    new Plot(at('slices'), 250, 190, 'Slice along ' + input.name));
  /* Designs by how near they are to the slice along input j, in ranges of the other inputs. */
  function nearDesigns(j, count) {
    const distances = designs.ids.map((_, d) => {
      let sum = 0;
      for (let i = 0; i < inputs.length; ++i) {
        if (i === j) continue;
        const step = (designs.inputs[i][d] - point[i]) / (ranges[i][1] - ranges[i][0]);
        sum += step * step;
      }
      return [sum, d];
    });
    return distances.sort((a, b) => a[0] - b[0]).slice(0, count).map((pair) => pair[1]);
  }

  function* drawSlices() {
    const k = shown;
    const x = point.slice();
    const lines = [];
    for (let j = 0; j < inputs.length; ++j) {
      const xs = [];
      const ys = [];
      const errors = [];
      const moved = x.slice();
      for (let i = 0; i <= SLICE_STEPS; ++i) {
        moved[j] = ranges[j][0] + (ranges[j][1] - ranges[j][0]) * i / SLICE_STEPS;
        xs.push(moved[j]);
        ys.push(study.response(k, moved));
        errors.push(study.error(k, moved));
        if (i % 4 === 3) yield;
      }
      lines.push({xs, ys, low: ys.map((y, i) => y - errors[i]), high: ys.map((y, i) => y + errors[i])});
      yield;
    }
    const yRange = rangeOf(...lines.flatMap((l) => [l.ys, l.low, l.high]));
    for (let j = 0; j < inputs.length; ++j) {
      const plot = slicePlots[j];
      const {xs, ys, low, high} = lines[j];
      plot.begin(ranges[j], yRange || [0, 1]);
      plot.clip((c) => {
        if (!Number.isFinite(low[0])) return;
        c.fillStyle = color('band');
        c.beginPath();
        xs.forEach((value, i) => c[i === 0 ? 'moveTo' : 'lineTo'](plot.x(value), plot.y(high[i])));
        for (let i = xs.length - 1; i >= 0; --i) c.lineTo(plot.x(xs[i]), plot.y(low[i]));
        c.fill();
      });
      const near = nearDesigns(j, Math.min(20, Math.ceil(designs.ids.length / 8)));
      plot.dots(near.map((d) => designs.inputs[j][d]), near.map((d) => designs.measured[k][d]), color('soft'));
      plot.line(xs, ys, color('accent'));
      plot.line([x[j], x[j]], yRange || [0, 1], color('bad'), 1);
      plot.axes(titleOf(inputs[j]), responses[k].name);
      plot.canvas.setAttribute('aria-label', `${responses[k].name} along ${inputs[j].name}: from ` +
        `${format(ys[0])} to ${format(ys[SLICE_STEPS])}`);
      yield;
    }
  }

  /* Predict: the map of two inputs */

  const mapX = at('map-x');
  const mapY = at('map-y');
  const byImportance = (k) => inputs.map((_, j) => j).sort((a, b) =>
    (responses[k].single_cops[b] || 0) - (responses[k].single_cops[a] || 0));
  const mapPlot = new Plot(at('map'), 560, 430, 'Map');
  const scalePlot = new Plot(at('map'), 120, 430, 'Colours of the map');
  const MAP_STEPS = 40;

  function* drawMap() {
    const [k, i, j] = [shown, Number(mapX.value), Number(mapY.value)];
    const x = point.slice();
    const n = MAP_STEPS;
    const grid = new Float64Array((n + 1) * (n + 1));
    const along = (input, step) => ranges[input][0] + (ranges[input][1] - ranges[input][0]) * step / n;
    const moved = x.slice();
    for (let row = 0; row <= n; ++row) {
      for (let column = 0; column <= n; ++column) {
        moved[j] = along(j, row);
        moved[i] = along(i, column);
        grid[row * (n + 1) + column] = study.response(k, moved);
        if (column % 8 === 7) yield;
      }
      yield;
    }
    const range = rangeOf(grid) || [0, 1];
    mapPlot.begin(ranges[i], ranges[j]);
    const share = (value) => (value - range[0]) / (range[1] - range[0]);
    const picture = document.createElement('canvas');  /* a pixel for each value, smoothed when drawn */
    picture.width = picture.height = n + 1;
    const pixels = picture.getContext('2d').createImageData(n + 1, n + 1);
    grid.forEach((value, a) => {
      if (!Number.isFinite(value)) return;
      const row = n - Math.floor(a / (n + 1));
      pixels.data.set([...shade(share(value)), 255], 4 * (row * (n + 1) + a % (n + 1)));
    });
    picture.getContext('2d').putImageData(pixels, 0, 0);
    mapPlot.clip((c) => {
      c.drawImage(picture, 0.5, 0.5, n, n, mapPlot.left, mapPlot.top, mapPlot.right - mapPlot.left,
        mapPlot.bottom - mapPlot.top);
      drawContours(c, grid, n, ticks(...range, 8), (s) => mapPlot.x(along(i, s)), (s) => mapPlot.y(along(j, s)));
      c.strokeStyle = '#ffffff';
      c.fillStyle = '#b3261e';
      c.lineWidth = 2;
      c.beginPath();
      c.arc(mapPlot.x(x[i]), mapPlot.y(x[j]), 5, 0, 2 * Math.PI);
      c.fill();
      c.stroke();
    });
    mapPlot.axes(titleOf(inputs[i]), titleOf(inputs[j]));
    mapPlot.canvas.setAttribute('aria-label', `${responses[k].name} over ${inputs[i].name} and ` +
      `${inputs[j].name}: from ${format(range[0])} to ${format(range[1])}`);
    scalePlot.begin([0, 1], range);
    scalePlot.right = scalePlot.left + 24;
    scalePlot.clip((c) => {
      for (let y = scalePlot.top; y < scalePlot.bottom; ++y) {
        c.fillStyle = `rgb(${shade((scalePlot.bottom - y) / (scalePlot.bottom - scalePlot.top)).join(',')})`;
        c.fillRect(scalePlot.left, y, 24, 1.5);
      }
    });
    const c = scalePlot.context;
    c.fillStyle = color('soft');
    c.font = '12px system-ui, sans-serif';
    c.textAlign = 'right';
    c.textBaseline = 'middle';
    for (const tick of ticks(...range, 8)) c.fillText(format(tick, 4), scalePlot.left - 4, scalePlot.y(tick));
    c.textAlign = 'left';
    c.textBaseline = 'top';
    c.fillText(shorten(titleOf(responses[k]), 16), 4, scalePlot.bottom + 8);
  }

  /* Lines of equal value by marching squares. */
  function drawContours(c, grid, n, levels, toX, toY) {
    c.strokeStyle = 'rgba(255,255,255,0.75)';
    c.lineWidth = 1;
    c.beginPath();
    for (const level of levels)
      for (let row = 0; row < n; ++row)
        for (let column = 0; column < n; ++column) {
          const corners = [[column, row], [column + 1, row], [column + 1, row + 1], [column, row + 1]];
          const crossings = [];
          for (let e = 0; e < 4; ++e) {
            const [ax, ay] = corners[e];
            const [bx, by] = corners[(e + 1) % 4];
            const a = grid[ay * (n + 1) + ax] - level;
            const b = grid[by * (n + 1) + bx] - level;
            if ((a < 0) === (b < 0) || !Number.isFinite(a - b)) continue;
            const t = a / (a - b);
            crossings.push([toX(ax + t * (bx - ax)), toY(ay + t * (by - ay))]);
          }
          for (let s = 0; s + 1 < crossings.length; s += 2) {
            c.moveTo(...crossings[s]);
            c.lineTo(...crossings[s + 1]);
          }
        }
    c.stroke();
  }

  function changed() {
    fillAnswers();
    startJob('slices', drawSlices());
    clearTimeout(changed.timer);
    changed.timer = setTimeout(() => startJob('map', drawMap()), 120);
  }

  /* Quality of a model */

  const fitPlot = new Plot(at('judgement'), 430, 400, 'Predicted against measured',
    'Each design predicted without itself, against what was measured; the band is the root mean square error.');
  const errorPlot = new Plot(at('judgement'), 430, 400, 'Errors', 'Measured minus predicted: how often.');

  function fillQuality() {
    const k = shown;
    const response = responses[k];
    at('model').textContent = `${response.description}, CoP ${format(response.cop, 4)}`;
    const rows = designs.ids.map((_, d) => d).filter((d) =>
      designs.measured[k][d] !== null && designs.predicted[k][d] !== null);
    const measured = rows.map((d) => designs.measured[k][d]);
    const predicted = rows.map((d) => designs.predicted[k][d]);
    const errors = measured.map((value, i) => value - predicted[i]);
    const rmse = errors.length ? Math.sqrt(errors.reduce((s, e) => s + e * e, 0) / errors.length) : NaN;

    const range = roomy(rangeOf(measured, predicted) || [0, 1]);
    fitPlot.begin(range, range);
    fitPlot.clip((c) => {
      if (!Number.isFinite(rmse)) return;
      c.fillStyle = color('band');
      c.beginPath();
      for (const [end, sign] of [[0, 1], [1, 1], [1, -1], [0, -1]])
        c.lineTo(fitPlot.x(range[end]), fitPlot.y(range[end] + sign * rmse));
      c.fill();
    });
    fitPlot.line(range, range, color('line'), 1);
    fitPlot.dots(measured, predicted, color('accent'), rows.length > 2000 ? 1.2 : 2.5);
    fitPlot.axes('measured', 'predicted');
    fitPlot.canvas.setAttribute('aria-label', rows.length === 0 ? 'No predictions without the design itself'
      : `Predicted against measured ${response.name} at ${rows.length} designs, root mean square error ${format(rmse, 3)}`);

    const span = rangeOf(errors) || [-1, 1];
    const bins = new Array(Math.min(40, Math.max(5, Math.ceil(Math.sqrt(errors.length))))).fill(0);
    for (const error of errors)
      ++bins[Math.min(bins.length - 1, Math.floor((error - span[0]) / (span[1] - span[0]) * bins.length))];
    errorPlot.begin(span, [0, Math.max(1, ...bins) * 1.05]);
    errorPlot.bars(bins, color('accent'));
    errorPlot.axes('error' + unitOf(response), 'designs');
    errorPlot.canvas.setAttribute('aria-label', errors.length === 0 ? 'No errors are known'
      : `Errors of ${response.name} from ${format(span[0], 3)} to ${format(span[1], 3)}`);

    const worst = rows.map((d, i) => [d, i]).sort((a, b) => Math.abs(errors[b[1]]) - Math.abs(errors[a[1]])).slice(0, 10);
    at('worst').replaceChildren(worst.length === 0 ? element('p', {}, 'The project keeps no errors of this model.')
      : table([{text: 'Design'}, {text: 'Measured', number: true}, {text: 'Predicted', number: true},
        {text: 'Error', number: true}], worst.map(([d, i]) => [element('th', {scope: 'row'}, designs.ids[d]),
        format(measured[i]), format(predicted[i]), format(errors[i], 3)]), 'Designs with the largest errors'));
    const rivals = data.competitors[k] || [];
    at('rivals').replaceChildren(rivals.length === 0 ? element('p', {}, 'The project does not tell which models competed.')
      : table([{text: 'Model'}, {text: 'CoP', number: true}, {text: 'Error', number: true}, {text: 'Inputs'}],
        rivals.map((r) => [element('th', {scope: 'row'}, (r.chosen ? '\u2605 chosen: ' : '') + r.model),
          format(r.cop, 4), format(r.rmse, 3), r.inputs]), 'Models that competed'));
  }

  /* Analyses */

  const level = (share) => 'c' + Math.min(5, Math.max(0, Math.round((share || 0) * 5)));
  const shareCell = (share, digits = 2) => element('td',
    {class: share === null || share === undefined ? 'number' : 'number ' + level(share)}, format(share, digits));

  function addTable(title, text, content) {
    const id = 'analysis-' + at('analyses').children.length;
    at('analyses').append(element('h3', {id}, title), element('p', {}, text),
      element('div', {class: 'scroll', role: 'region', 'aria-labelledby': id, tabindex: 0}, content));
    if (at('analyses').hidden) document.querySelector('nav').append(' ', element('a', {href: '#analyses'}, 'Analyses'));
    at('analyses').hidden = false;
  }

  function fillSensitivity(result) {
    const groups = result.groups.map((group) => group.join(' + '));
    const rows = Object.entries(result.quantities);
    for (const [key, title, text] of [
      ['total', 'Total effects', 'The share of the variation that would remain if all other inputs were known.'],
      ['first', 'First order effects', 'The share of the variation that each input explains by itself.']])
      addTable(title, `${text} From ${result.evaluations} predictions; pointing at a number shows its interval of 95 %.`,
        table([{text: 'Quantity'}, ...groups.map((g) => ({text: g, number: true}))],
          rows.map(([name, q]) => [element('th', {scope: 'row'}, name), ...groups.map((group) => {
            const cell = shareCell((q[key] || {})[group] ?? null);
            if (q[key] && q[key][group] !== null && q[key][group] !== undefined)
              cell.title = `${format(q[key + '_low'][group], 2)} to ${format(q[key + '_high'][group], 2)}`;
            return cell;
          })]), title));
  }

  function fillPropagation(result) {
    const quantiles = ['0.05', '0.5', '0.95'];
    addTable('Scatter', `What scatters when the inputs do, at ${result.designs} designs.`, table(
      [{text: 'Quantity'}, {text: 'Mean', number: true}, {text: 'Standard deviation', number: true},
        ...quantiles.map((q) => ({text: Number(q) * 100 + ' %', number: true}))],
      Object.entries(result.quantities).map(([name, q]) => [element('th', {scope: 'row'}, name), format(q.mean),
        format(q.sd, 3), ...quantiles.map((share) => format((q.quantiles || {})[share]))]), 'Scatter'));
    const limits = Object.entries(result.limits || {});
    if (limits.length > 0)
      addTable('Limits', 'How likely each limit is violated.', table([{text: 'Limit'},
        {text: 'Probability', number: true}, {text: 'Interval of 95 %', number: true}, {text: 'By'}],
      limits.map(([name, l]) => [element('th', {scope: 'row'}, name), format(l.probability, 3),
        `${format(l.low, 3)} to ${format(l.high, 3)}`, l.method]), 'Limits'));
  }

  function fillOptimization(result) {
    const rows = result.designs.map((design, i) => {
      const show = element('button', {type: 'button', 'aria-label': `Set the sliders to design ${i + 1}`}, 'Set');
      show.addEventListener('click', () => {
        inputs.forEach((input, j) => {
          const value = design[result.columns.indexOf(input.name)];
          if (value !== undefined && value !== null) point[j] = value;
        });
        controls.forEach((control) => control.show(false));
        changed();
      });
      return [element('td', {}, show), ...design.map((value) => format(value))];
    });
    addTable('Optimisation', 'What was found on the models; Set moves the sliders there.', element('div', {},
      element('pre', {}, result.text), table([{text: 'Sliders'},
        ...result.columns.map((text) => ({text, number: true}))], rows, 'Designs that were found')));
  }

  if (data.optimization) fillOptimization(data.optimization);
  if (data.sensitivity) fillSensitivity(data.sensitivity);
  if (data.propagation) fillPropagation(data.propagation);

  function selectResponse(k) {
    shown = k;
    at('shown').value = at('judged').value = String(k);
    const [first, second] = byImportance(k);
    mapX.value = String(first);
    mapY.value = String(second === undefined ? first : second);
    fillQuality();
    changed();
  }

  /* Designs */

  const quantities = [...inputs.map((entry, j) => ({...entry, values: designs.inputs[j]})),
    ...responses.map((entry, k) => ({...entry, values: designs.measured[k]}))];
  const spans = quantities.map((q) => rangeOf(q.values) || [0, 1]);
  const brushes = quantities.map(() => null);
  let isChosen = designs.ids.map(() => true);

  const AXIS = Math.max(64, Math.min(120, 1180 / quantities.length));
  const parallel = new Plot(at('parallel'), Math.max(300, AXIS * quantities.length), 340, 'Parallel coordinates');
  parallel.canvas.style.maxWidth = 'none';
  const axisX = (q) => AXIS * (q + 0.5);
  const [TOP, BOTTOM] = [44, 316];
  const axisY = (q, value) => BOTTOM - (value - spans[q][0]) / (spans[q][1] - spans[q][0]) * (BOTTOM - TOP);

  function* drawParallel() {
    parallel.begin([0, 1], [0, 1]);
    const c = parallel.context;
    for (const chosen of [false, true]) {
      c.strokeStyle = color(chosen ? 'accent' : 'pale');
      c.globalAlpha = chosen ? Math.max(0.02, Math.min(0.7, 100 / designs.ids.length)) : 0.12;
      c.lineWidth = 1;
      for (let d = 0; d < designs.ids.length; ++d) {
        if (isChosen[d] !== chosen) continue;
        c.beginPath();
        let pen = false;
        for (let q = 0; q < quantities.length; ++q) {
          const value = quantities[q].values[d];
          if (value === null) {
            pen = false;
            continue;
          }
          c[pen ? 'lineTo' : 'moveTo'](axisX(q), axisY(q, value));
          pen = true;
        }
        c.stroke();
        if (d % 100 === 99) yield;
      }
    }
    c.globalAlpha = 1;
    c.font = '12px system-ui, sans-serif';
    for (let q = 0; q < quantities.length; ++q) {
      c.strokeStyle = color('text');
      c.fillStyle = color('text');
      c.beginPath();
      c.moveTo(axisX(q), TOP);
      c.lineTo(axisX(q), BOTTOM);
      c.stroke();
      c.textAlign = 'center';
      c.textBaseline = 'bottom';
      c.fillText(shorten(quantities[q].name, Math.floor(AXIS / 7)), axisX(q), TOP - 18);
      c.fillStyle = color('soft');
      c.fillText(format(spans[q][1], 3), axisX(q), TOP - 2);
      c.textBaseline = 'top';
      c.fillText(format(spans[q][0], 3), axisX(q), BOTTOM + 4);
      if (!brushes[q]) continue;
      c.strokeStyle = color('bad');
      c.lineWidth = 2;
      const top = axisY(q, Math.min(brushes[q][1], spans[q][1]));
      const bottom = axisY(q, Math.max(brushes[q][0], spans[q][0]));
      c.strokeRect(axisX(q) - 8, top, 16, bottom - top);
      c.lineWidth = 1;
    }
  }

  const scatter = new Plot(at('scatter'), 560, 430, 'Two quantities of the designs');
  function* drawScatter() {
    const [a, b] = [quantities[Number(at('scatter-x').value)], quantities[Number(at('scatter-y').value)]];
    scatter.begin(roomy(rangeOf(a.values) || [0, 1]), roomy(rangeOf(b.values) || [0, 1]));
    for (const chosen of [false, true]) {
      const rows = designs.ids.map((_, d) => d).filter((d) => isChosen[d] === chosen);
      for (let i = 0; i < rows.length; i += 1000) {
        const part = rows.slice(i, i + 1000);
        scatter.dots(part.map((d) => a.values[d]), part.map((d) => b.values[d]), color(chosen ? 'accent' : 'pale'),
          rows.length > 2000 ? 1.3 : 2.5);
        yield;
      }
    }
    scatter.axes(titleOf(a), titleOf(b));
    scatter.canvas.setAttribute('aria-label', `${b.name} against ${a.name} of the designs`);
    drawDistribution(a);
  }

  /* How often the values of a quantity are, in all designs and in the chosen ones. */
  const distribution = new Plot(at('scatter'), 560, 430, 'Distribution of a quantity');
  function drawDistribution(quantity) {
    const span = rangeOf(quantity.values) || [0, 1];
    const n = Math.min(40, Math.max(5, Math.ceil(Math.sqrt(designs.ids.length))));
    const counts = [new Array(n).fill(0), new Array(n).fill(0)];
    quantity.values.forEach((value, d) => {
      if (value === null) return;
      const bin = Math.min(n - 1, Math.floor((value - span[0]) / (span[1] - span[0]) * n));
      ++counts[0][bin];
      if (isChosen[d]) ++counts[1][bin];
    });
    distribution.begin(span, [0, Math.max(1, ...counts[0]) * 1.05]);
    distribution.bars(counts[0], color('pale'));
    distribution.bars(counts[1], color('accent'));
    distribution.axes(titleOf(quantity), 'designs');
    distribution.canvas.setAttribute('aria-label', `Distribution of ${quantity.name} from ${format(span[0])} to ` +
      `${format(span[1])}`);
  }

  function brushed() {
    isChosen = designs.ids.map((_, d) => brushes.every((range, q) => {
      const value = quantities[q].values[d];
      return !range || (value !== null && value >= range[0] && value <= range[1]);
    }));
    const count = isChosen.filter(Boolean).length;
    at('chosen').textContent = `${count} of ${designs.ids.length} designs chosen`;
    parallel.canvas.setAttribute('aria-label', `Parallel coordinates of ${quantities.length} quantities, ` +
      at('chosen').textContent);
    startJob('parallel', drawParallel());
    startJob('scatter', drawScatter());
  }

  const rangeFields = quantities.map((q, i) => ['at least', 'at most'].map((word, end) => {
    const field = element('input', {type: 'text', inputmode: 'decimal', size: 8, 'aria-label': `${q.name} ${word}`});
    field.addEventListener('change', () => {
      const value = parseNumber(field.value);
      const range = brushes[i] || [-Infinity, Infinity];
      range[end] = Number.isNaN(value) ? (end === 0 ? -Infinity : Infinity) : value;
      brushes[i] = range[0] === -Infinity && range[1] === Infinity ? null : range;
      brushed();
    });
    return field;
  }));
  function showRange(q) {
    rangeFields[q].forEach((field, end) => {
      field.value = brushes[q] && Number.isFinite(brushes[q][end]) ? format(brushes[q][end]) : '';
    });
  }
  at('ranges').append(table([{text: 'Quantity'}, {text: 'At least'}, {text: 'At most'}],
    quantities.map((q, i) => [element('th', {scope: 'row'}, titleOf(q)),
      ...rangeFields[i].map((field) => element('td', {}, field))]), 'Ranges of the designs to choose'));

  function watchBrush() {
    const canvas = parallel.canvas;
    canvas.style.touchAction = 'pan-x';
    let active = null;
    const place = (event) => {
      const box = canvas.getBoundingClientRect();
      return [event.clientX - box.left, within(event.clientY - box.top, [TOP, BOTTOM])];
    };
    const valueAt = (q, y) => spans[q][0] + (BOTTOM - y) / (BOTTOM - TOP) * (spans[q][1] - spans[q][0]);
    canvas.addEventListener('pointerdown', (event) => {
      const [x, y] = place(event);
      const q = within(Math.floor(x / AXIS), [0, quantities.length - 1]);
      if (Math.abs(x - axisX(q)) > 18) return;
      active = {q, from: y};
      canvas.setPointerCapture(event.pointerId);
    });
    canvas.addEventListener('pointermove', (event) => {
      if (!active) return;
      const y = place(event)[1];
      if (Math.abs(y - active.from) < 4) return;
      brushes[active.q] = [valueAt(active.q, Math.max(y, active.from)), valueAt(active.q, Math.min(y, active.from))];
      active.moved = true;
      showRange(active.q);
      brushed();
    });
    canvas.addEventListener('pointerup', () => {
      if (active && !active.moved) {
        brushes[active.q] = null;
        showRange(active.q);
        brushed();
      }
      active = null;
    });
  }

  function redraw() {
    fillQuality();
    startJob('slices', drawSlices());
    startJob('map', drawMap());
    startJob('parallel', drawParallel());
    startJob('scatter', drawScatter());
  }

  fillOverview();
  for (const select of [at('shown'), at('judged')]) {
    addOptions(select, responses, 0);
    select.addEventListener('change', () => selectResponse(Number(select.value)));
  }
  for (const select of [mapX, mapY]) {
    addOptions(select, inputs, 0);
    select.addEventListener('change', () => startJob('map', drawMap()));
  }
  addOptions(at('scatter-x'), quantities, 0);
  addOptions(at('scatter-y'), quantities, inputs.length);
  for (const select of [at('scatter-x'), at('scatter-y')])
    select.addEventListener('change', () => startJob('scatter', drawScatter()));
  controls.forEach((control) => control.show(false));
  watchBrush();
  selectResponse(0);
  brushed();
  window.matchMedia('(prefers-color-scheme: dark)').addEventListener('change', redraw);
  /* Paper is light: what is drawn by then stays drawn. */
  const finishJobs = () => {
    jobs.clear();
    for (const work of [drawSlices(), drawMap(), drawParallel(), drawScatter()]) for (const _ of work);
  };
  window.addEventListener('beforeprint', () => {
    document.documentElement.classList.add('print');
    fillQuality();
    finishJobs();
  });
  window.addEventListener('afterprint', () => {
    document.documentElement.classList.remove('print');
    redraw();
  });
})();
