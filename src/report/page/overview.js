/* What a reader sees first. */

/* Sentences that say what to trust, what matters and what is wrong at the reference values. */
function summary(project) {
  const {data, models, inputs, responses, criteria, study, reference} = project;
  const sentences = [];
  const judged = responses.filter((r) => r.cop !== null).sort((a, b) => b.cop - a.cop);
  const named = (r) => `${r.name} (CoP ${format(r.cop, 3)})`;
  if (judged.length > 1)
    sentences.push(`Best predicted is ${named(judged[0])}, worst ${named(judged[judged.length - 1])}.`);
  const weak = judged.filter((r) => r.cop < WEAK_COP);
  if (weak.length > 0)
    sentences.push(`Trust with care, CoP below ${WEAK_COP}: ${listed(weak.map((r) => r.name))}.`);
  const lost = inputs.map((input, j) => d3.sum(responses, (r) => Math.max(0, r.single_cops[j] || 0)));
  const first = d3.range(inputs.length).filter((j) => lost[j] > 0).sort((a, b) => lost[b] - lost[a]).slice(0, 3);
  if (first.length > 0 && inputs.length > first.length)
    sentences.push(`Over all responses, most is lost without ${listed(first.map((j) => inputs[j].name))}.`);
  const values = study.criteria(reference, study.predict(reference));
  const limits = criteria.map((c, i) => [c, values[i]]).filter(([c]) => c.limit);
  const violated = limits.filter(([, value]) => value < 0).map(([c]) => c.name);
  if (limits.length > 0)
    sentences.push('At the reference values ' + (violated.length === 0
      ? 'all limits are kept.'
      : `${violated.length} of ${count(limits.length, 'limit')} violated: ${listed(violated)}.`));
  if (data.optimization) sentences.push(`Optimisation: ${data.optimization.text.split('\n')[0]}.`);
  const left = [...models.responses_left_out, ...models.criteria_left_out].map((e) => e.name);
  if (left.length > 0) sentences.push(`Not in this page (see the notes): ${listed(left)}.`);
  return sentences;
}
const WEAK_COP = 0.8;
const listed = (names) => names.slice(0, 8).map((name) => shorten(name, 60)).join(', ') +
  (names.length > 8 ? ` and ${names.length - 8} more` : '');

function fillOverview(project) {
  const {data, models, inputs, responses, designs} = project;
  document.title = models.project.name;
  at('title').textContent = models.project.name;
  at('subtitle').textContent = [count(responses.length, 'response'), count(inputs.length, 'input'),
    count(designs.ids.length, 'design')].join(', ');
  at('glance').append(...summary(project).map((sentence) => element('li', {}, sentence)));
  at('origin').textContent = `Made by ${models.made_by}. SHA-512 of the project: ${models.project.sha512}`;

  at('cops').append(table(
    [{text: 'Response'}, {text: 'CoP', number: true}, ...inputs.map((i) => ({text: i.name, number: true}))],
    responses.map((r) => [rowHead(r.title), shareCell(r.cop, 4), ...r.single_cops.map((share) => shareCell(share))]),
    'Coefficients of prognosis of each response, by input'));

  const random = data.distributions.some((text) => text);
  const head = [{text: 'Name'}, {text: 'Unit'}, {text: 'Lower', number: true}, {text: 'Upper', number: true},
    {text: 'Reference', number: true}];
  if (inputs.some((input) => input.states)) head.push({text: 'States'});
  if (random) head.push({text: 'Distribution'});
  at('inputs').append(table(head, inputs.map((input, j) => {
    const row = [rowHead(input.name), input.unit || '', ...[input.lower, input.upper, input.reference]
      .map((value) => input.text(value))];
    if (inputs.some((other) => other.states)) row.push((input.states || []).map((state) => input.text(state)).join(', '));
    if (random) row.push(data.distributions[j]);
    return row;
  }), 'Inputs with the range of the designs'));

  const notes = [...data.notes,
    ...models.responses_left_out.map((e) => `The response ${e.name} is not here: ${e.reason}.`),
    ...models.criteria_left_out.map((e) => `The criterion ${e.name} is not here: ${e.reason}.`)];
  if (notes.length > 0)
    at('notes').append(element('h3', {}, 'Notes'), element('ul', {}, ...notes.map((n) => element('li', {}, n))));
}
