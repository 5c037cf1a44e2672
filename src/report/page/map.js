/* A response over two inputs, as areas between lines of equal value. */
function makeMap(project, moveTo) {
  const {study, inputs, responses, point} = project;
  const STEPS = 40;
  /* Dark blue to yellow, even in lightness. */
  const COLORS = ['#440154', '#414487', '#2a788e', '#22a884', '#7ad151', '#fde725'];
  const map = new Chart(at('map'), 580, 440, 'Map');
  const legend = new Chart(at('map'), 110, 440, 'Colours of the map', {margin: {right: 22}});
  const chosen = () => [Number(at('map-x').value), Number(at('map-y').value)];

  map.svg.classed('pick', true).on('click', () => {
    const [x, y] = d3.mouse(map.svg.node());
    if (!map.x || x < map.left || x > map.right || y < map.top || y > map.bottom) return;
    const values = point.slice();
    const [i, j] = chosen();
    values[i] = map.x.invert(x);
    values[j] = map.y.invert(y);
    moveTo(values);
  });

  /* Rings of polygons from steps of the grid to the chart. */
  const pathOf = (toX, toY) => (contour) => contour.coordinates.flat().map((ring) =>
    'M' + ring.map(([column, row]) => `${toX(column - 0.5).toFixed(1)},${toY(row - 0.5).toFixed(1)}`).join('L') + 'Z').join('');

  return function* draw() {
    const k = project.shown;
    const [i, j] = chosen();
    const n = STEPS + 1;
    const along = (input, step) => input.range[0] + (input.range[1] - input.range[0]) * step / STEPS;
    const value = (input, step) => input.states ? input.nearest(along(input, step)) : along(input, step);
    const grid = new Array(n * n);
    const moved = point.slice();
    for (let row = 0; row < n; ++row)
      for (let column = 0; column < n; ++column) {
        moved[j] = value(inputs[j], row);
        moved[i] = value(inputs[i], column);
        grid[row * n + column] = study.response(k, moved);
        if (column % 8 === 7) yield;
      }
    const range = rangeOf(grid) || [0, 1];
    const levels = [range[0], ...d3.ticks(...range, 12).filter((tick) => tick > range[0] && tick < range[1])];
    const color = d3.scaleSequential(range, d3.piecewise(d3.interpolateRgb, COLORS));
    const middle = (level, a) => color((level + (levels[a + 1] || range[1])) / 2);
    const known = grid.map((v) => Number.isFinite(v) ? v : 2 * range[0] - range[1]);  /* below all levels */

    map.begin(inputs[i], inputs[j]);
    map.marks.selectAll('.level').data(d3.contours().size([n, n]).thresholds(levels)(known)).join('path')
      .attr('class', 'level').attr('fill', (contour, a) => middle(contour.value, a))
      .attr('d', pathOf((s) => map.x(along(inputs[i], s)), (s) => map.y(along(inputs[j], s))));
    map.points('point', [point[i]], [point[j]], 5);
    map.marks.selectAll('.point').raise();
    map.describe(`${responses[k].name} over ${inputs[i].name} and ${inputs[j].name}: from ` +
      `${format(range[0])} to ${format(range[1])}`);

    legend.begin({title: '', range: [0, 1]}, {title: responses[k].title, range});
    legend.svg.select('.axis.across').remove();
    legend.marks.selectAll('.level').data(levels).join('rect').attr('class', 'level').attr('fill', middle)
      .attr('x', legend.left).attr('width', legend.right - legend.left)
      .attr('y', (_, a) => legend.y(levels[a + 1] || range[1]))
      .attr('height', (level, a) => legend.y(level) - legend.y(levels[a + 1] || range[1]));
  };
}
