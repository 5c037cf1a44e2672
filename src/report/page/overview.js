/* What a reader sees first. */
function fillOverview(project) {
  const {data, models, inputs, responses, designs} = project;
  document.title = models.project.name;
  at('title').textContent = models.project.name;
  at('subtitle').textContent = [count(responses.length, 'response'), count(inputs.length, 'input'),
    count(designs.ids.length, 'design')].join(', ');
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
