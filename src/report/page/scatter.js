/* Two quantities of the designs against each other, and how often the values of the first are. */
function makeScatter(project, quantities, isChosen) {
  const {designs} = project;
  const scatter = new Chart(at('scatter'), 580, 440, 'Two quantities of the designs');
  const distribution = new Chart(at('scatter'), 580, 440, 'Distribution of a quantity');
  const wide = (quantity) => quantity.states ? quantity
    : {...quantity, range: roomy(rangeOf(quantity.values) || [0, 1])};

  function drawDistribution(quantity) {
    const {range, states} = wide(quantity);
    const all = histogram(quantity.values, {range, states});
    distribution.begin({...quantity, range}, {title: 'designs', range: [0, mostOf(all)]});
    distribution.bars('every', all);
    distribution.bars('chosen', histogram(quantity.values.map((v, d) => isChosen(d) ? v : null), {range, states}));
    distribution.describe(`Distribution of ${quantity.name} from ${quantity.text(range[0])} to ${quantity.text(range[1])}`);
  }

  return function* draw() {
    const [a, b] = ['scatter-x', 'scatter-y'].map((id) => quantities[Number(at(id).value)]);
    scatter.begin(wide(a), wide(b));
    const context = scatter.paint();
    for (const chosen of [false, true]) {
      const rows = d3.range(designs.ids.length).filter((d) => isChosen(d) === chosen);
      for (let i = 0; i < rows.length; i += 1000) {
        const part = rows.slice(i, i + 1000);
        scatter.dots(context, part.map((d) => a.values[d]), part.map((d) => b.values[d]),
          color(chosen ? 'accent' : 'pale'), rows.length > 2000 ? 1.3 : 2.5);
        yield;
      }
    }
    scatter.describe(`${b.name} against ${a.name} of the designs`);
    drawDistribution(a);
  };
}
