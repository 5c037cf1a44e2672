/* The response along each input, the other inputs as they are set. */
function makeSlices(project) {
  const {study, inputs, responses, designs, point} = project;
  const STEPS = 40;
  const charts = inputs.map((input) => new Chart(at('slices'), 270, 200, 'Slice along ' + input.name));

  /* Designs nearest to the slice along input j, in ranges of the other inputs. */
  function nearDesigns(j) {
    const wanted = Math.min(20, Math.ceil(designs.ids.length / 8));
    const distances = designs.ids.map((_, d) => d3.sum(inputs, (input, i) =>
      i === j ? 0 : ((designs.inputs[i][d] - point[i]) / (input.range[1] - input.range[0])) ** 2));
    return d3.quickselect(d3.range(designs.ids.length), wanted, 0, designs.ids.length - 1,
      (a, b) => distances[a] - distances[b]).slice(0, wanted);
  }

  return function* draw() {
    const k = project.shown;
    const lines = [];
    for (let j = 0; j < inputs.length; ++j) {
      const {states, range} = inputs[j];
      const xs = states || d3.range(STEPS + 1).map((i) => range[0] + (range[1] - range[0]) * i / STEPS);
      const line = {xs, ys: [], low: [], high: []};
      const moved = point.slice();
      for (const x of xs) {
        moved[j] = x;
        const y = study.response(k, moved);
        const error = study.error(k, moved);
        line.ys.push(y);
        line.low.push(y - error);
        line.high.push(y + error);
        if (line.ys.length % 4 === 3) yield;
      }
      lines.push(line);
      yield;
    }
    const range = rangeOf(...lines.flatMap((l) => [l.ys, l.low, l.high])) || [0, 1];
    for (let j = 0; j < inputs.length; ++j) {
      const {xs, ys, low, high} = lines[j];
      const chart = charts[j].begin(inputs[j], {title: responses[k].title, range});
      if (inputs[j].states) chart.rules('error', xs, low, high);
      else chart.band(xs, low, high);
      const near = nearDesigns(j);
      chart.points('design', near.map((d) => designs.inputs[j][d]), near.map((d) => designs.measured[k][d]));
      if (inputs[j].states) chart.points('state', xs, ys, 4);
      else chart.line('curve', xs, ys);
      chart.rules('here', [point[j]], [range[0]], [range[1]]);
      chart.describe(`${responses[k].name} along ${inputs[j].name}: from ${format(ys[0])} to ` +
        format(ys[ys.length - 1]));
      yield;
    }
  };
}
