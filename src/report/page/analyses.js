/* What was found on the models, where it was asked for. */
function fillAnalyses(project, moveTo) {
  const {data, inputs, point} = project;

  function addTable(title, text, content) {
    const id = 'analysis-' + at('analyses').children.length;
    at('analyses').append(element('h3', {id}, title), element('p', {}, text),
      element('div', {class: 'scroll', role: 'region', 'aria-labelledby': id, tabindex: 0}, content));
    at('analyses').hidden = at('analyses-link').hidden = false;
  }

  function fillSensitivity(result) {
    const groups = result.groups.map((group) => group.join(' + '));
    const rows = Object.entries(result.quantities);
    for (const [key, title, text] of [
      ['total', 'Total effects', 'The share of the variation that would remain if all other inputs were known.'],
      ['first', 'First order effects', 'The share of the variation that each input explains by itself.']])
      addTable(title, `${text} From ${result.evaluations} predictions; pointing at a number shows its interval of 95 %.`,
        table([{text: 'Quantity'}, ...groups.map((g) => ({text: g, number: true}))],
          rows.map(([name, q]) => [rowHead(name), ...groups.map((group) => {
            const share = (q[key] || {})[group] ?? null;
            const cell = shareCell(share);
            if (share !== null)
              cell.title = `${format(q[key + '_low'][group], 2)} to ${format(q[key + '_high'][group], 2)}`;
            return cell;
          })]), title));
  }

  function fillPropagation(result) {
    const quantiles = ['0.05', '0.5', '0.95'];
    addTable('Scatter', `What scatters when the inputs do, at ${result.designs} designs.`, table(
      [{text: 'Quantity'}, {text: 'Mean', number: true}, {text: 'Standard deviation', number: true},
        ...quantiles.map((q) => ({text: Number(q) * 100 + ' %', number: true}))],
      Object.entries(result.quantities).map(([name, q]) => [rowHead(name), format(q.mean), format(q.sd, 3),
        ...quantiles.map((share) => format((q.quantiles || {})[share]))]), 'Scatter'));
    const limits = Object.entries(result.limits || {});
    if (limits.length > 0)
      addTable('Limits', 'How likely each limit is violated.', table([{text: 'Limit'},
        {text: 'Probability', number: true}, {text: 'Interval of 95 %', number: true}, {text: 'By'}],
      limits.map(([name, l]) => [rowHead(name), format(l.probability, 3),
        `${format(l.low, 3)} to ${format(l.high, 3)}`, l.method]), 'Limits'));
  }

  function fillOptimization(result) {
    const columnOf = inputs.map((input) => result.columns.indexOf(input.name));
    const rows = result.designs.map((design, i) => {
      const set = element('button', {type: 'button', 'aria-label': `Set the sliders to design ${i + 1}`}, 'Set');
      set.addEventListener('click', () => moveTo(columnOf.map((column, j) => design[column] ?? point[j])));
      return [element('td', {}, set), ...design.map((value, column) => {
        const j = columnOf.indexOf(column);
        return j < 0 ? format(value) : inputs[j].text(value);
      })];
    });
    addTable('Optimisation', 'What was found on the models; Set moves the sliders there.', element('div', {},
      element('pre', {}, result.text), table([{text: 'Sliders'},
        ...result.columns.map((text) => ({text, number: true}))], rows, 'Designs that were found')));
  }

  if (data.optimization) fillOptimization(data.optimization);
  if (data.sensitivity) fillSensitivity(data.sensitivity);
  if (data.propagation) fillPropagation(data.propagation);
}
