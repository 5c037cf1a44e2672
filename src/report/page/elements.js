/* Elements of the document, and work in pieces. Texts of the project get into the document as text
   nodes and attributes' values alone. */

const at = (id) => document.getElementById(id);

function element(name, attributes, ...children) {
  const node = document.createElement(name);
  for (const [key, value] of Object.entries(attributes || {})) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

function table(head, rows, caption) {
  const cell = (name, content, number) => {
    const node = content instanceof Node ? content : textCell(name, String(content));
    if (number) node.classList.add('number');
    return node;
  };
  const body = element('tbody');
  for (const row of rows)
    body.append(element('tr', {}, ...row.map((content, i) => cell('td', content, head[i].number))));
  const heads = head.map((h) => cell('th', textCell('th', h.text, 80, {scope: 'col'}), h.number));
  return element('table', {}, element('caption', {class: 'unseen'}, caption),
    element('thead', {}, element('tr', {}, ...heads)), body);
}

/* A long text stands in full in the tip. */
function textCell(name, text, length = 400, attributes = {}) {
  const shown = brief(text, length);
  return element(name, shown === text ? attributes : {title: text, ...attributes}, shown);
}
const rowHead = (text, title) => textCell('th', text, 100, {scope: 'row', ...(title ? {title} : {})});

/* A share between 0 and 1, the darker the larger. */
function shareCell(share, digits = 2) {
  const known = share !== null && share !== undefined;
  const level = within(Math.round((share || 0) * 5), [0, 5]);
  return element('td', {class: known ? 'c' + level : ''}, known ? String(Number(share.toFixed(digits))) : '\u2013');
}

function addOptions(select, texts) {
  texts.forEach((text, i) => select.append(element('option', {value: i}, text)));
}

/* Work that keeps the page alive: runs a generator for some milliseconds of each frame, or until it
   yields `nextFrame`: what it drew is to reach the screen first. A new job under the same name ends
   the old one. */
const nextFrame = true;
const jobs = new Map();
function startJob(name, generator) {
  const job = {};
  jobs.set(name, job);
  const step = () => {
    if (jobs.get(name) !== job) return;
    const end = performance.now() + 12;
    while (performance.now() < end) {
      const {done, value} = generator.next();
      if (done) {
        jobs.delete(name);
        return;
      }
      if (value === nextFrame) break;
    }
    requestAnimationFrame(step);
  };
  step();
}
