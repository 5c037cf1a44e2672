/* The page: its parts, and what happens when the reader acts. */
(() => {
  const project = readProject(at('data').textContent);
  const {inputs, responses} = project;
  const quantities = [...inputs, ...responses];

  function changed() {
    fillAnswers(project);
    startJob('slices', slices());
    clearTimeout(changed.timer);
    changed.timer = setTimeout(() => startJob('map', map()), 120);
  }
  function selectResponse(k) {
    project.shown = k;
    at('shown').value = at('judged').value = String(k);
    const [first, second = first] = project.byImportance(k);
    at('map-x').value = String(first);
    at('map-y').value = String(second);
    quality();
    changed();
  }
  function onSelect(ids, entries, chosen, act) {
    ids.forEach((id, i) => {
      addOptions(at(id), entries.map((entry) => entry.title));
      at(id).value = String(chosen[i]);
      at(id).addEventListener('change', () => act(Number(at(id).value)));
    });
  }

  fillOverview(project);
  const controls = makeControls(project, changed);
  const slices = makeSlices(project);
  const map = makeMap(project, controls.moveTo);
  const quality = makeQuality(project);
  fillAnalyses(project, controls.moveTo);
  const scatter = makeScatter(project, quantities, (d) => parallel.isChosen(d));
  const parallel = makeParallel(project, quantities, () => startJob('scatter', scatter()));
  onSelect(['shown', 'judged'], responses, [0, 0], selectResponse);
  onSelect(['map-x', 'map-y'], inputs, [0, 0], () => startJob('map', map()));
  onSelect(['scatter-x', 'scatter-y'], quantities, [0, inputs.length], () => startJob('scatter', scatter()));
  selectResponse(0);
  parallel.choose();

  /* SVG follows the colours of the page by itself, a canvas has to be painted again. */
  function repaint() {
    quality();
    startJob('parallel', parallel.draw());
    startJob('scatter', scatter());
  }
  window.matchMedia('(prefers-color-scheme: dark)').addEventListener('change', repaint);
  /* Paper is light and does not wait; tables that are wider, in its smaller type, shrink. */
  const [PAPER, TYPE] = [690, 11 / 16];
  window.addEventListener('beforeprint', () => {
    document.documentElement.classList.add('print');
    for (const table of document.querySelectorAll('.scroll table'))
      table.style.zoom = Math.min(1, PAPER / (TYPE * table.scrollWidth));
    jobs.clear();
    quality();
    for (const work of [slices(), map(), parallel.draw(), scatter()]) for (const _ of work);
  });
  window.addEventListener('afterprint', () => {
    document.documentElement.classList.remove('print');
    for (const table of document.querySelectorAll('.scroll table')) table.style.zoom = 1;
    repaint();
  });
})();
