/* The project as the parts of the page see it. */

/* What has values in the designs: `title` has the unit, `range` is what charts and sliders span,
   `text` writes a value, of an input of words as its word. */
function makeQuantity(entry, values, words, range) {
  const states = entry.states && entry.states.length > 0 ? entry.states.slice().sort((a, b) => a - b) : null;
  return {
    ...entry, values, states,
    title: entry.name + (entry.unit ? ` [${entry.unit}]` : ''),
    range: states ? roomy(rangeOf(states)) : range,
    text: (value, digits) => words[value] !== undefined ? words[value] : format(value, digits),
    nearest: (value) => states.reduce((a, b) => Math.abs(b - value) < Math.abs(a - value) ? b : a)
  };
}

function readProject(text) {
  const data = JSON.parse(text);
  const {models, designs} = data;
  const inputs = models.inputs.map((input, j) => makeQuantity(input, designs.inputs[j], data.words[j] || [],
    rangeOf([input.lower, input.upper]) || rangeOf([input.reference === null ? 0 : input.reference])));
  const responses = models.responses.map((response, k) => makeQuantity(response, designs.measured[k], [],
    roomy(rangeOf(designs.measured[k], designs.predicted[k]) || [0, 1])));
  const reference = inputs.map((input) => {
    const value = input.reference === null ? (input.range[0] + input.range[1]) / 2
      : within(input.reference, input.range);
    return input.states ? input.nearest(value) : value;
  });
  return {
    data, models, designs, inputs, responses, reference,
    criteria: models.criteria,
    study: makeStudy(models),
    point: reference.slice(),  /* where the sliders stand */
    shown: 0,                  /* the response that is looked at */
    byImportance: (k) => d3.range(inputs.length).sort((a, b) =>
      (responses[k].single_cops[b] || 0) - (responses[k].single_cops[a] || 0))
  };
}
