/* How good the model of a response is. */
function makeQuality(project) {
  const {data, designs, responses} = project;
  const fit = new Chart(at('judgement'), 400, 380, 'Predicted against measured', {caption:
    'Each design predicted without itself, against what was measured; the band is the root mean square error.'});
  const residuals = new Chart(at('judgement'), 400, 380, 'Errors against predictions',
    {caption: 'Measured minus predicted: a pattern would tell what the model does not know.'});
  const spread = new Chart(at('judgement'), 400, 380, 'Distribution of the errors',
    {caption: 'Measured minus predicted: how often.'});

  function fillTables(k, rows, measured, predicted, errors) {
    const worst = d3.range(rows.length).sort((a, b) => Math.abs(errors[b]) - Math.abs(errors[a])).slice(0, 10);
    at('worst').replaceChildren(worst.length === 0
      ? element('p', {}, 'The project keeps no errors of this model.')
      : table([{text: 'Design'}, {text: 'Measured', number: true}, {text: 'Predicted', number: true},
        {text: 'Error', number: true}], worst.map((i) => [rowHead(designs.ids[rows[i]]), format(measured[i]),
        format(predicted[i]), format(errors[i], 3)]), 'Designs with the largest errors'));
    const rivals = data.competitors[k] || [];
    at('rivals').replaceChildren(rivals.length === 0
      ? element('p', {}, 'The project does not tell which models competed.')
      : table([{text: 'Model'}, {text: 'CoP', number: true}, {text: 'Error', number: true}, {text: 'Inputs'}],
        rivals.map((r) => [rowHead((r.chosen ? '\u2605 chosen: ' : '') + r.model), format(r.cop, 4),
          format(r.rmse, 3), r.inputs]), 'Models that competed'));
  }

  return function fill() {
    const k = project.shown;
    const response = responses[k];
    at('model').textContent = `${response.description}, CoP ${format(response.cop, 4)}`;
    const rows = d3.range(designs.ids.length).filter((d) =>
      designs.measured[k][d] !== null && designs.predicted[k][d] !== null);
    const measured = rows.map((d) => designs.measured[k][d]);
    const predicted = rows.map((d) => designs.predicted[k][d]);
    const errors = rows.map((_, i) => measured[i] - predicted[i]);
    const rmse = Math.sqrt(d3.mean(errors, (e) => e * e));
    const radius = rows.length > 2000 ? 1.2 : 2.5;
    const unit = response.unit ? ` [${response.unit}]` : '';

    const range = roomy(rangeOf(measured, predicted) || [0, 1]);
    fit.begin({title: 'measured' + unit, range}, {title: 'predicted' + unit, range});
    fit.band(range, range.map((v) => v - rmse), range.map((v) => v + rmse));
    fit.line('ideal', range, range);
    fit.dots(fit.paint(), measured, predicted, color('accent'), radius);
    fit.describe(rows.length === 0 ? 'No predictions without the design itself'
      : `Predicted against measured ${response.name} at ${count(rows.length, 'design')}, ` +
        `root mean square error ${format(rmse, 3)}`);

    const span = rangeOf(errors) || [-1, 1];
    const said = errors.length === 0 ? 'No errors are known'
      : `Errors of ${response.name} from ${format(span[0], 3)} to ${format(span[1], 3)}`;
    residuals.begin({title: 'predicted' + unit, range}, {title: 'error' + unit, range: roomy(span)});
    residuals.band(range, [-rmse, -rmse], [rmse, rmse]);
    residuals.line('ideal', range, [0, 0]);
    residuals.dots(residuals.paint(), predicted, errors, color('accent'), radius);
    residuals.describe(said + ', against predictions');

    const bins = histogram(errors, {range: span});
    spread.begin({title: 'error' + unit, range: span}, {title: 'designs', range: [0, mostOf(bins)]});
    spread.bars('chosen', bins);
    spread.describe(said + ', how often');
    fillTables(k, rows, measured, predicted, errors);
  };
}
