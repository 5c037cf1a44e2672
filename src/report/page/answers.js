/* What the models say at the point of the sliders. */
function fillAnswers(project) {
  const {study, point, inputs, responses, criteria, shown} = project;
  const values = study.predict(point);
  const limits = study.criteria(point, values);
  const nodes = [table([{text: 'Response'}, {text: 'Prediction', number: true}, {text: 'Error', number: true}],
    responses.map((r, k) => {
      const error = study.error(k, point);
      return [rowHead(r.title), format(values[k]), Number.isFinite(error) ? '\u00b1 ' + format(error, 2) : 'unknown'];
    }),
    'Predictions at the point')];
  if (criteria.length > 0)
    nodes.push(element('h3', {}, 'Criteria'), table(
      [{text: 'Criterion'}, {text: 'Value', number: true}, {text: 'State'}], criteria.map((c, i) => {
        const name = element('th', {scope: 'row', title: c.text}, c.name);
        const bad = c.limit && limits[i] < 0;
        const state = !c.limit ? '' : bad ? element('td', {class: 'bad'}, '\u2717 violated')
          : limits[i] >= 0 ? element('td', {class: 'good'}, '\u2713 kept') : 'unknown';
        return [name, element('td', bad ? {class: 'bad'} : {}, format(limits[i])), state];
      }), 'Criteria at the point'));
  const outside = inputs.filter((input, j) => input.lower !== null && input.upper !== null &&
    (point[j] < input.lower - 1e-8 || point[j] > input.upper + 1e-8));
  if (outside.length > 0)
    nodes.push(element('p', {class: 'bad'}, 'Outside the range of the designs: ' +
      outside.map((input) => input.name).join(', ')));
  at('answers').replaceChildren(...nodes);

  clearTimeout(fillAnswers.timer);  /* said once the reader pauses */
  fillAnswers.timer = setTimeout(() => {
    const violated = criteria.filter((c, i) => c.limit && limits[i] < 0).map((c) => c.name);
    at('spoken').textContent = `${responses[shown].name} ${format(values[shown])}` +
      (criteria.some((c) => c.limit) ? `, limits violated: ${violated.join(', ') || 'none'}` : '') +
      (outside.length > 0 ? ', outside the range of the designs' : '');
  }, 600);
}
