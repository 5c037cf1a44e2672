/* A slider for each input; beside it a field for numbers, or of a discrete input the list of its
   states. */

const KEY_STEPS = {ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageDown: -10, PageUp: 10};

function makeControls(project, changed) {
  const {inputs, point, reference} = project;
  const form = at('sliders');

  const controls = inputs.map((input, j) => {
    const [low, high] = input.range;
    const id = 'input-' + j;
    const states = input.states;
    const slider = element('input', {type: 'range', id,
      ...(states ? {min: 0, max: states.length - 1, step: 1} : {min: low, max: high, step: 'any'})});
    const label = element('label', {for: id}, input.title);
    const error = element('span', {class: 'bad', id: id + '-error', role: 'alert'});
    const field = states ? element('select', {'aria-label': input.title + ', its states'})
      : element('input', {type: 'text', inputmode: 'decimal', autocomplete: 'off',
        'aria-label': input.title + ', as a number', 'aria-describedby': 'number-hint ' + id + '-error'});
    if (states) addOptions(field, states.map((state) => input.text(state, 6)));

    function setTo(value) {
      point[j] = value;
      show();
      changed();
    }
    function moveSlider() {
      slider.value = String(states ? states.indexOf(input.nearest(point[j])) : point[j]);
      slider.setAttribute('aria-valuetext', input.text(point[j]) + (input.unit ? ' ' + input.unit : ''));
    }
    function show() {
      moveSlider();
      field.value = states ? slider.value : format(point[j], 6);
      if (!states) setBad('');
    }
    const isBad = () => field.getAttribute('aria-invalid') === 'true';
    function setBad(text) {
      field.setAttribute('aria-invalid', String(text !== ''));
      error.textContent = text;
    }

    slider.addEventListener('input', () => setTo(states ? states[Number(slider.value)] : Number(slider.value)));
    slider.addEventListener('keydown', (event) => {  /* a step any browser takes as too small */
      const step = KEY_STEPS[event.key];
      if (!step || states) return;
      event.preventDefault();
      setTo(within(Number(slider.value) + step * (high - low) / 100, input.range));
    });
    if (states) field.addEventListener('change', () => setTo(states[Number(field.value)]));
    else {
      const read = () => {
        const value = parseNumber(field.value);
        setBad(Number.isFinite(value) ? '' : `No number; ${input.name} stays ${format(point[j], 6)}`);
        if (!Number.isFinite(value) || value === point[j]) return;
        point[j] = value;
        moveSlider();
        changed();
      };
      field.addEventListener('input', read);
      field.addEventListener('change', () => {  /* what is no number stays, to be mended */
        if (field.value !== format(point[j], 6)) read();
        if (!isBad()) field.value = format(point[j], 6);
      });
    }
    form.append(element('div', {class: 'input'}, label, slider, field, error));
    return show;
  });

  function moveTo(values) {
    values.forEach((value, j) => { point[j] = inputs[j].states ? inputs[j].nearest(value) : value; });
    controls.forEach((show) => show());
    changed();
  }
  const back = element('button', {type: 'button'}, 'Reference values');
  back.addEventListener('click', () => moveTo(reference));
  form.append(back);
  form.addEventListener('submit', (event) => event.preventDefault());
  controls.forEach((show) => show());
  return {moveTo};
}
