'use strict';
(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const stage = document.getElementById('stage');
  const svg = stage.querySelector('svg');
  const byId = (id) => document.getElementById(id);
  const make = (tag, text, attributes = {}) => {
    const element = document.createElement(tag);
    if (text !== undefined && text !== null) element.textContent = text;
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
    return element;
  };
  const shown = (number) => String(Number(number.toPrecision(12)));

  // ---- what is seen ------------------------------------------------------------------------------
  // Units of the picture: x to the right, y downwards; the drawing's y is the other way, and its
  // origin lies at `shift`.
  const shift = data.shift;
  const whole = (() => {
    const [x, y, width, height] = (svg.getAttribute('viewBox') || '0 0 1 1').split(/\s+/).map(Number);
    return { x, y, width: width || 1, height: height || 1 };
  })();
  svg.removeAttribute('width');
  svg.removeAttribute('height');
  let view = { x: 0, y: 0, scale: 1 };  // the corner in units, and pixels a unit
  let drawn = view;                     // the one that the browser has painted
  let settle = 0;

  const paint = () => {
    drawn = view;
    svg.style.transform = '';
    svg.setAttribute('viewBox', `${view.x} ${view.y} ${stage.clientWidth / view.scale} ${stage.clientHeight / view.scale}`);
  };
  // While something moves, what is painted already is moved; many elements are painted anew only
  // when it rests.
  const many = svg.querySelectorAll('path, text').length > 3000;
  stage.classList.toggle('many', many);
  const show = (next) => {
    view = next;
    clearTimeout(settle);
    if (!many) return paint();
    const factor = view.scale / drawn.scale;
    svg.style.transform = `translate(${(drawn.x - view.x) * view.scale}px, ${(drawn.y - view.y) * view.scale}px) scale(${factor})`;
    settle = setTimeout(paint, 160);
  };
  const frame = (box, room = 1.04) => {
    const scale = Math.min(stage.clientWidth / (box.width * room), stage.clientHeight / (box.height * room)) || 1;
    show({
      x: box.x + box.width / 2 - stage.clientWidth / scale / 2,
      y: box.y + box.height / 2 - stage.clientHeight / scale / 2,
      scale,
    });
  };
  const fit = () => frame(whole);
  const zoom = (factor, px = stage.clientWidth / 2, py = stage.clientHeight / 2) => {
    const scale = Math.min(Math.max(view.scale * factor, 1e-9), 1e12);
    show({ x: view.x + px / view.scale - px / scale, y: view.y + py / view.scale - py / scale, scale });
  };
  const move = (dx, dy) => show({ x: view.x - dx / view.scale, y: view.y - dy / view.scale, scale: view.scale });
  const pointOf = (event) => {
    const box = stage.getBoundingClientRect();
    return [event.clientX - box.left, event.clientY - box.top];
  };
  const worldOf = ([px, py]) => [view.x + px / view.scale + shift[0], -(view.y + py / view.scale) + shift[1]];

  // ---- pointer and keys --------------------------------------------------------------------------
  const pointers = new Map();
  let travelled = 0;
  stage.addEventListener('pointerdown', (event) => {
    stage.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, pointOf(event));
    travelled = 0;
  });
  stage.addEventListener('pointermove', (event) => {
    const at = pointOf(event);
    const world = worldOf(at);
    byId('place').textContent = `${world[0].toFixed(3)}, ${world[1].toFixed(3)}`;
    const before = pointers.get(event.pointerId);
    if (!before) return;
    if (pointers.size === 2) {
      const [other] = [...pointers].filter(([id]) => id !== event.pointerId).map(([, point]) => point);
      const distance = (a, b) => Math.hypot(a[0] - b[0], a[1] - b[1]) || 1;
      zoom(distance(at, other) / distance(before, other), other[0], other[1]);
      travelled = 99;
    } else {
      travelled += Math.hypot(at[0] - before[0], at[1] - before[1]);
      if (travelled > 4) {
        stage.classList.add('moving');
        move(at[0] - before[0], at[1] - before[1]);
      }
    }
    pointers.set(event.pointerId, at);
  });
  const release = (event) => {
    if (!pointers.delete(event.pointerId)) return;
    stage.classList.remove('moving');
    if (event.type === 'pointerup' && travelled <= 4) pickAt(event.clientX, event.clientY);
  };
  stage.addEventListener('pointerup', release);
  stage.addEventListener('pointercancel', release);
  stage.addEventListener('wheel', (event) => {
    event.preventDefault();
    const [px, py] = pointOf(event);
    zoom(Math.exp(-event.deltaY * (event.deltaMode === 1 ? 0.05 : 0.0015)), px, py);
  }, { passive: false });
  const keys = {
    ArrowLeft: () => move(60, 0), ArrowRight: () => move(-60, 0), ArrowUp: () => move(0, 60), ArrowDown: () => move(0, -60),
    '+': () => zoom(1.25), '=': () => zoom(1.25), '-': () => zoom(0.8), f: fit, F: fit, 0: fit, Escape: () => pick(null),
  };
  stage.addEventListener('keydown', (event) => {
    if (!keys[event.key] || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    keys[event.key]();
  });
  document.addEventListener('keydown', (event) => {
    if (event.key !== '/' || event.target.tagName === 'INPUT') return;
    event.preventDefault();
    byId('find').focus();
  });
  byId('fit').onclick = fit;
  byId('closer').onclick = () => zoom(1.25);
  byId('farther').onclick = () => zoom(0.8);
  new ResizeObserver(() => show({ ...view })).observe(stage);

  // ---- elements ----------------------------------------------------------------------------------
  const leaf = (element) => element instanceof SVGElement && element.dataset.handle && element.tagName !== 'g';
  const pickAt = (x, y) => {
    paint();
    let area = null;
    // A line is thin: places around the pointer are tried too, and areas only when there is none.
    for (let radius = 0; radius <= 6; radius += 2)
      for (let step = 0; step < (radius ? 8 : 1); ++step) {
        const angle = (step * Math.PI) / 4;
        for (const found of document.elementsFromPoint(x + radius * Math.cos(angle), y + radius * Math.sin(angle))) {
          if (!leaf(found)) continue;
          if (found.tagName === 'text' || !found.hasAttribute('fill')) return pick(found);
          area = area || found;
        }
      }
    return pick(area);
  };
  const numbersOf = (text) => (text.match(/-?\d+\.?\d*(?:[eE][-+]?\d+)?/g) || []).map(Number);
  // Corners and ends, as the drawing has them.
  const pointsOf = (element) => {
    if (element.tagName === 'text') {
      const matrix = numbersOf(element.getAttribute('transform') || '');
      return [[matrix[4] + shift[0], matrix[5] + shift[1]]];
    }
    const points = [];
    for (const [, , rest] of (element.getAttribute('d') || '').matchAll(/([MLA])([^MLAZ]*)/g)) {
      const numbers = numbersOf(rest);
      if (numbers.length >= 2) points.push([numbers.at(-2) + shift[0], numbers.at(-1) + shift[1]]);
    }
    return points;
  };
  const same = (a, b) => a.dataset.handle === b.dataset.handle && (a.dataset.reference || '') === (b.dataset.reference || '');
  const rows = (pairs) => {
    const table = make('table');
    for (const [name, value] of pairs) {
      const row = table.appendChild(make('tr'));
      row.append(make('th', name), make('td', value));
    }
    return table;
  };
  const section = (panel, title, content) => panel.append(make('h2', title), content);
  let picked = null;
  const pick = (element) => {
    for (const marked of svg.querySelectorAll('.picked')) marked.classList.remove('picked');
    picked = element;
    const panel = byId('panel-element');
    panel.replaceChildren();
    if (!element) return panel.append(make('p', 'Click an element, or find it by its handle.', { class: 'hint' }));
    const { handle, type, layer, reference } = element.dataset;
    for (const other of svg.querySelectorAll(`[data-handle="${CSS.escape(handle)}"]`))
      if (other.tagName !== 'g' && same(other, element)) other.classList.add('picked');
    const facts = [['Handle', handle], ['Type', type], ['Layer', layer]];
    if (reference) facts.push(['Reference', reference]);
    for (let at = element.parentElement.closest('g[data-handle]'); at; at = at.parentElement.closest('g[data-handle]'))
      facts.push(['Within', `${at.dataset.block} (${at.dataset.type} ${at.dataset.handle})`]);
    if (element.tagName === 'text') facts.push(['Text', element.textContent]);
    panel.append(rows(facts));
    const points = pointsOf(element);
    if (points.length) {
      const list = points.slice(0, 24).map((point, i) => [String(i + 1), point.map(shown).join(', ')]);
      if (points.length > 24) list.push(['', `and ${points.length - 24} more`]);
      section(panel, 'World coordinates', rows(list));
    }
    const details = data.details[(reference ? reference + '|' : '') + handle];
    if (details && details.attributes) section(panel, 'Attributes', rows(details.attributes));
    if (details && details.values) section(panel, 'Values', rows(details.values));
    for (const [application, groups] of Object.entries((details && details.xdata) || {}))
      section(panel, `Extended data of ${application}`, rows(groups));
    select('element');
  };

  byId('find').addEventListener('change', (event) => {
    const word = event.target.value.trim();
    if (!word) return pick(null);
    let found = svg.querySelector(`:is(path, text)[data-handle="${CSS.escape(word.toUpperCase())}"]`);
    if (!found) found = [...svg.querySelectorAll('text')].find((text) => text.textContent.toLowerCase().includes(word.toLowerCase()));
    if (!found) {
      byId('said').textContent = `nothing is drawn with the handle or text ${word}`;
      return;
    }
    byId('said').textContent = '';
    const box = found.getBoundingClientRect();
    const [x, y] = [box.x - stage.getBoundingClientRect().x, box.y - stage.getBoundingClientRect().y];
    const least = Math.min(whole.width, whole.height) / 50;
    const size = { width: Math.max(box.width / view.scale, least), height: Math.max(box.height / view.scale, least) };
    frame({ x: view.x + (x + box.width / 2) / view.scale - size.width / 2, y: view.y + (y + box.height / 2) / view.scale - size.height / 2, ...size }, 4);
    pick(found);
  });

  // ---- layers and references ---------------------------------------------------------------------
  const hidden = { layer: new Set(), reference: new Set() };
  const applyHidden = () => {
    const rules = [];
    const leaves = (selector) => rules.push(`#stage :is(path, text)${selector}`);
    for (const name of hidden.layer) leaves(`[data-layer="${CSS.escape(name)}"]`);
    for (const name of hidden.reference) {
      leaves(`[data-reference="${CSS.escape(name)}"]`);
      leaves(`[data-reference^="${CSS.escape(name + '|')}"]`);
    }
    byId('hidden').textContent = rules.length ? `${rules.join(',\n')} { display: none !important; }` : '';
  };
  // By name, how many elements there are, and the colour of the first.
  const kindsOf = (key) => {
    const kinds = new Map();
    for (const element of svg.querySelectorAll(':is(path, text)[data-handle]')) {
      const name = element.dataset[key];
      if (!name) continue;
      if (!kinds.has(name)) kinds.set(name, { name, note: 0, colour: element.getAttribute('stroke') || element.getAttribute('fill') });
      ++kinds.get(name).note;
    }
    return [...kinds.values()].sort((a, b) => a.name.localeCompare(b.name));
  };
  const switches = (panel, kind, items) => {
    const boxes = [];
    const list = make('ul');
    for (const item of items) {
      const label = list.appendChild(make('li')).appendChild(make('label'));
      const box = label.appendChild(make('input', null, { type: 'checkbox', 'data-switch': item.name }));
      box.checked = true;
      box.onchange = () => {
        hidden[kind][box.checked ? 'delete' : 'add'](item.name);
        applyHidden();
      };
      boxes.push(box);
      if (item.colour) label.appendChild(make('span', null, { class: 'swatch' })).style.background = item.colour;
      label.append(make('span', item.name), make('span', item.note, { class: 'count' }));
    }
    const all = panel.appendChild(make('p'));
    for (const [text, on] of [['All', true], ['None', false]])
      all.appendChild(make('button', text, { type: 'button' })).onclick = () => {
        for (const box of boxes) {
          box.checked = on;
          hidden[kind][on ? 'delete' : 'add'](box.dataset.switch);
        }
        applyHidden();
      };
    panel.append(list);
  };
  const layers = kindsOf('layer');
  switches(byId('panel-layers'), 'layer', layers);

  const references = byId('panel-references');
  if (data.references.length === 0) references.append(make('p', 'The drawing refers to no other.', { class: 'hint' }));
  else switches(references, 'reference', kindsOf('reference').map(({ name, note }) => ({ name, note })));
  for (const reference of data.references) {
    const state = make('p');
    state.append(make('strong', reference.name), ' ', make('span', reference.status, { class: reference.status === 'loaded' ? 'good' : 'bad' }));
    references.append(state, rows([['Saved as', reference.saved || '-'], ['Found', reference.found || '-'], ['Kind', reference.kind],
      ['Inserts', reference.inserts], ['Entities', reference.entities]]));
  }

  // ---- the store ---------------------------------------------------------------------------------
  const store = byId('panel-store');
  const directories = new Map(data.store.directories.map((directory) => [directory.path, directory]));
  const nameOf = (path) => path.slice(path.lastIndexOf('/') + 1);
  const below = new Map();
  for (const path of directories.keys()) {
    if (path === '/') continue;
    const parent = path.slice(0, path.lastIndexOf('/')) || '/';
    if (!below.has(parent)) below.set(parent, []);
    below.get(parent).push(path);
  }
  const branch = (path) => {
    const directory = directories.get(path);
    const node = make('details', null, { 'data-path': path });
    const head = node.appendChild(make('summary'));
    head.append(`${path === '/' ? '' : nameOf(path)}/ `, make('span', `${directory.used} used, ${directory.free} free`, { class: 'room' }));
    let filled = false;
    const fill = () => {
      if (filled) return;
      filled = true;
      for (const child of below.get(path) || []) node.append(branch(child));
      for (const file of directory.files) {
        const leaf = node.appendChild(make('details', null, { 'data-path': `${path === '/' ? '' : path}/${file.name}` }));
        leaf.appendChild(make('summary')).append(`${file.name} `, make('span', `${file.type}, ${file.bytes} bytes`, { class: 'room' }));
        leaf.append(make('pre', file.value));
      }
    };
    node.addEventListener('toggle', fill);
    return node;
  };
  if (directories.has('/')) {
    const root = store.appendChild(branch('/'));
    root.open = true;
  } else store.append(make('p', `The store: ${data.store.state}.`, { class: 'hint' }));

  // ---- findings ----------------------------------------------------------------------------------
  const findings = byId('panel-findings');
  if (data.findings.length === 0) findings.append(make('p', 'check finds nothing wrong.', { class: 'good' }));
  for (const finding of data.findings)
    findings.append(make('p', `${finding.severity}: ${finding.path ? finding.path + ': ' : ''}${finding.message} (${finding.code})`, { class: finding.severity === 'note' ? '' : 'bad' }));
  if (data.notDrawn.length) section(findings, 'Not drawn', rows(data.notDrawn));

  // ---- tabs --------------------------------------------------------------------------------------
  const tabs = [['element', 'Element'], ['layers', `Layers ${layers.length}`], ['references', `References ${data.references.length}`],
    ['store', 'Store'], ['findings', `Findings ${data.findings.length}`]];
  const select = (chosen) => {
    for (const [id] of tabs) {
      byId(`panel-${id}`).hidden = id !== chosen;
      byId(`tab-${id}`).setAttribute('aria-selected', String(id === chosen));
    }
  };
  for (const [id, text] of tabs)
    byId('tabs').appendChild(make('button', text, { type: 'button', role: 'tab', id: `tab-${id}`, 'aria-controls': `panel-${id}` })).onclick = () => select(id);

  byId('name').textContent = data.name;
  byId('facts').textContent = data.facts.join('  ·  ');
  select('layers');
  fit();
  paint();
})();
