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
    const node = content instanceof Node ? content : element(name, {}, String(content));
    if (number) node.classList.add('number');
    return node;
  };
  const body = element('tbody');
  for (const row of rows)
    body.append(element('tr', {}, ...row.map((content, i) => cell('td', content, head[i].number))));
  const heads = head.map((h) => cell('th', element('th', {scope: 'col'}, h.text), h.number));
  return element('table', {}, element('caption', {class: 'unseen'}, caption),
    element('thead', {}, element('tr', {}, ...heads)), body);
}

const rowHead = (text) => element('th', {scope: 'row'}, text);

/* A share between 0 and 1, the darker the larger. */
function shareCell(share, digits = 2) {
  const known = share !== null && share !== undefined;
  const level = within(Math.round((share || 0) * 5), [0, 5]);
  return element('td', {class: known ? 'c' + level : ''}, format(share, digits));
}

function addOptions(select, texts) {
  texts.forEach((text, i) => select.append(element('option', {value: i}, text)));
}

/* Work that keeps the page alive: runs a generator for some milliseconds at a time. A new job under
   the same name ends the old one. */
const jobs = new Map();
function startJob(name, generator) {
  const job = {};
  jobs.set(name, job);
  const step = () => {
    if (jobs.get(name) !== job) return;
    const end = performance.now() + 12;
    while (performance.now() < end)
      if (generator.next().done) {
        jobs.delete(name);
        return;
      }
    setTimeout(step, 0);
  };
  step();
}
