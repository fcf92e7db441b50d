'use strict';
// Adds to the page what it does not need to be read: one part at a time, order, filter, zoom, and
// the edges and times of one plugin. All texts are taken from the page and set as text.
(() => {
  const ROW = 24;  // height of a row, as in page.css
  const MOST_ZOOM = 100;
  const MOST_NAMES = 40;
  const SVG = 'http://www.w3.org/2000/svg';
  const byId = (id) => document.getElementById(id);
  const all = (within, selector) => [...within.querySelectorAll(selector)];

  const element = (name, text, kind) => {
    const made = document.createElement(name);
    if (text) made.textContent = text;
    if (kind) made.className = kind;
    return made;
  };
  const shape = (name, attributes) => {
    const made = document.createElementNS(SVG, name);
    for (const key of Object.keys(attributes)) made.setAttribute(key, attributes[key]);
    return made;
  };

  // What the rows of one phase say.

  const numberIn = (text) => parseFloat(text.replace('≥', ''));  // NaN: not known, or none

  const readRow = (tr, place, titles) => {
    const cell = (title) => tr.cells[titles.findIndex((th) => th.dataset.sort === title)].textContent;
    const bars = all(tr, '.b rect');
    const last = bars[bars.length - 1];
    return {
      tr, place,  // among the rows that are shown; -1: it is not shown
      order: place,  // by begin
      index: Number(tr.id.split('-')[1]),
      name: tr.querySelector('bdi').textContent,
      result: tr.dataset.r,
      duration: numberIn(cell('duration')),
      slack: numberIn(cell('slack')),
      waitsFor: tr.dataset.w ? tr.dataset.w.split(' ').map(Number) : [],
      waiters: [],
      by: tr.dataset.by === undefined ? -1 : Number(tr.dataset.by),
      end: last ? parseFloat(last.getAttribute('x')) + parseFloat(last.getAttribute('width')) : 0,
    };
  };

  const readPhase = (section) => {
    const table = section.querySelector('.plugins');
    const titles = all(table, 'thead th');
    const rows = all(table, 'tbody tr').map((tr, place) => readRow(tr, place, titles))
        .sort((a, b) => a.index - b.index);
    for (const row of rows) for (const other of row.waitsFor) rows[other].waiters.push(row.index);
    return {section, table, titles, rows, id: section.id, wall: Number(section.dataset.wall),
            zoom: 1, from: 0, shown: rows};
  };

  const phases = all(document, 'section.phase').map(readPhase);
  if (phases.length === 0) return;
  let phase = phases[0];
  let current = null;  // the row whose edges are drawn
  let pinned = false;  // it stays when the pointer moves

  // Order and filter.

  const compare = {
    model: (a, b) => a.index - b.index,
    begin: (a, b) => a.order - b.order,
    duration: (a, b) => b.duration - a.duration,
    slack: (a, b) => a.slack - b.slack,
    name: (a, b) => a.name.localeCompare(b.name, undefined, {numeric: true}),
  };

  const inOrder = (rows, key) => {
    const known = (row) => typeof row[key] !== 'number' || !Number.isNaN(row[key]);
    return [...rows].sort((a, b) => {
      if (known(a) !== known(b)) return known(a) ? -1 : 1;
      return (known(a) && compare[key](a, b)) || a.index - b.index;
    });
  };

  const isWanted = (row) => {
    const part = byId('filter').value.trim().toLowerCase();
    const result = byId('result').value;
    if (part && !row.name.toLowerCase().includes(part)) return false;
    if (result === 'path') return row.tr.classList.contains('path');
    return !result || row.result === result;
  };

  const drawPathEdge = (of, row) => {
    const line = row.tr.querySelector('line.e');
    if (!line) return;
    const place = of.rows[row.by].place;
    line.toggleAttribute('hidden', place < 0 || row.place < 0);
    line.setAttribute('y1', (place - row.place) * ROW + ROW / 2);
  };

  const arrange = (of) => {
    const key = byId('sort').value;
    of.shown = inOrder(of.rows, key).filter(isWanted);
    for (const row of of.rows) row.place = -1;
    of.shown.forEach((row, place) => { row.place = place; });
    for (const row of of.rows) row.tr.hidden = row.place < 0;
    const body = of.table.tBodies[0];
    if (of.shown.some((row, place) => body.rows[place] !== row.tr)) {
      body.append(...of.shown.map((row) => row.tr));
    }
    for (const row of of.rows) drawPathEdge(of, row);
    for (const item of all(of.section, '.lanes svg[data-p]')) {
      item.classList.toggle('dim', of.rows[item.dataset.p].place < 0);
    }
    for (const th of of.titles) {
      if (th.dataset.sort !== key) th.removeAttribute('aria-sort');
      else th.setAttribute('aria-sort', key === 'duration' ? 'descending' : 'ascending');
    }
    letOneRowTakeTheFocus(of);
    drawAxes(of);
  };

  const arrangeAll = () => {
    phases.forEach(arrange);
    byId('count').textContent = `${phase.shown.length} of ${phase.rows.length} plugins`;
    if (current) draw(current.place < 0 ? null : current);
  };

  const letOneRowTakeTheFocus = (of) => {
    const first = of.shown.includes(current) ? current : of.shown[0];
    for (const row of of.rows) row.tr.tabIndex = row === first ? 0 : -1;
  };

  // Zoom.

  const tickOf = (time, most) => {  // at most that many labels in that time
    for (let tick = 1000; ; tick *= 10) {
      for (const factor of [1, 2, 5]) if (time / (tick * factor) < most) return tick * factor;
    }
  };

  const drawAxes = (of) => {
    for (const axis of all(of.section, '.axis')) {
      const width = axis.closest('.b').clientWidth || innerWidth / 2;
      const tick = tickOf(of.wall / of.zoom, Math.min(Math.max(width / 60, 2), 10));
      const first = Math.ceil(of.wall * of.from / tick);
      const last = Math.floor(of.wall * (of.from + 1 / of.zoom) / tick + 1e-9);
      const lanes = axis.closest('.lanes');
      const rows = lanes ? lanes.tBodies[0].rows.length : of.shown.length;
      const parts = [];
      for (let i = first; i <= last && of.wall > 0; ++i) {
        const x = `${100 * i * tick / of.wall}%`;
        parts.push(shape('line', {x1: x, x2: x, y1: 18, y2: ROW * (rows + 1)}));
        const label = shape('text', {x, y: 13});
        const at = (i * tick / of.wall - of.from) * of.zoom;
        if (at < 0.02) label.setAttribute('class', 'first');
        else if (at > 0.98) label.setAttribute('class', 'last');
        label.textContent = String(Number((i * tick / 1e6).toFixed(6)));
        parts.push(label);
      }
      axis.replaceChildren(...parts);
    }
  };

  const zoomTo = (zoom, from) => {
    phase.zoom = Math.min(Math.max(zoom, 1), MOST_ZOOM);
    phase.from = Math.min(Math.max(from, 0), 1 - 1 / phase.zoom);
    phase.section.style.setProperty('--zoom', phase.zoom);
    phase.section.style.setProperty('--from', phase.from);
    drawAxes(phase);
  };

  /// Zooms; what is at `at` (0 to 1) of the shown width stays there.
  const zoomBy = (factor, at) => {
    const zoom = Math.min(Math.max(phase.zoom * factor, 1), MOST_ZOOM);
    zoomTo(zoom, phase.from + at / phase.zoom - at / zoom);
  };
  /// What zooming keeps in its place: the end of the plugin under the pointer, if it is shown.
  const middle = () => {
    const at = current ? (current.end / 100 - phase.from) * phase.zoom : 0.5;
    return at >= 0 && at <= 1 ? at : 0.5;
  };
  const moveBy = (part) => zoomTo(phase.zoom, phase.from + part / phase.zoom);

  // One plugin.

  const names = (title, indices) => {
    const line = element('p', indices.length ? `${title}: ` : `${title}: none`);
    for (const index of indices.slice(0, MOST_NAMES)) {
      const link = element('button', phase.rows[index].name);
      link.type = 'button';
      link.addEventListener('click', () => go(phase.rows[index]));
      line.append(link, ' ');
    }
    const more = indices.length - MOST_NAMES;
    if (more > 0) line.append(`and ${more} more`);
    return line;
  };

  const showDetails = (row) => {
    const details = byId('details');
    if (!row) {
      details.replaceChildren(element('p', 'Point at a plugin, or reach one by Tab and the arrow ' +
          'keys, to see its times and edges. Click it, or press Enter, to keep it here.'));
      return;
    }
    const title = element('h2');
    title.append(element('bdi', row.name), `: ${row.tr.cells[1].textContent}`);
    const list = element('dl');
    phase.titles.forEach((th, i) => {
      const text = row.tr.cells[i].textContent.trim();
      if (i < 3 || !text) return;
      const pair = element('div');
      const unit = th.classList.contains('n') && !Number.isNaN(numberIn(text)) &&
          th.textContent !== 'Thread' ? ' ms' : '';
      pair.append(element('dt', th.textContent), element('dd', text + unit));
      list.append(pair);
    });
    const parts = [title, list];
    if (phase.section.dataset.edges) {
      parts.push(names('Waits for', row.waitsFor), names('Waited for by', row.waiters));
    } else {
      parts.push(element('p', 'What it waits for is not known.'));
    }
    if (pinned) {
      const close = element('button', 'Release (Esc)', 'close');
      close.type = 'button';
      close.addEventListener('click', release);
      parts.push(close);
    }
    details.replaceChildren(...parts);
  };

  const clearEdges = () => {
    for (const line of all(document, 'line.f')) line.remove();
    for (const cell of all(document, '.b.top')) cell.classList.remove('top');
    for (const tr of all(document, '.plugins tbody tr')) {
      tr.classList.remove('current', 'needed', 'waiting');
    }
  };

  const drawEdge = (row, x, other, kind) => {
    other.tr.classList.add(kind);
    if (other.place < 0) return;
    const y = (other.place - row.place) * ROW + ROW / 2;
    const line = shape('line', {class: `f ${kind}`, x1: `${x}%`, x2: `${x}%`, y1: y, y2: ROW / 2});
    row.tr.querySelector('.b svg').append(line);
  };

  const draw = (row) => {
    clearEdges();
    current = row;
    if (!row) pinned = false;
    showDetails(row);
    if (!row) return;
    row.tr.classList.add('current');
    row.tr.querySelector('.b').classList.add('top');
    for (const index of row.waitsFor) drawEdge(row, phase.rows[index].end, phase.rows[index], 'needed');
    for (const index of row.waiters) drawEdge(row, row.end, phase.rows[index], 'waiting');
  };

  const release = () => {
    const row = current;
    draw(null);
    if (row) row.tr.focus({preventScroll: true});
  };

  const pin = (row) => {
    pinned = !(pinned && current === row);
    draw(row);
  };

  /// Shows the row of a plugin, also when another part or a filter has hidden it.
  const go = (row) => {
    showPart(phase, 'plugins');
    if (row.place < 0) {
      byId('filter').value = '';
      byId('result').value = '';
      arrangeAll();
    }
    pinned = true;
    row.tr.focus({preventScroll: true});
    draw(row);
    row.tr.scrollIntoView({block: 'center'});
  };

  // Parts of the page.

  const showPart = (shownPhase, part) => {
    if (phase !== shownPhase) draw(null);
    phase = shownPhase;
    for (const other of phases) {
      other.section.hidden = other !== phase;
      for (const view of ['plugins', 'threads']) byId(`${other.id}-${view}`).hidden = view !== part;
    }
    const target = part === 'plugins' ? `#${phase.id}` : `#${phase.id}-${part}`;
    for (const link of all(document, 'nav a')) {
      if (link.hash === target) link.setAttribute('aria-current', 'true');
      else link.removeAttribute('aria-current');
    }
    byId('count').textContent = `${phase.shown.length} of ${phase.rows.length} plugins`;
  };

  const showTarget = () => {
    const [id, part] = location.hash.slice(1).split('-');
    const target = phases.find((other) => other.id === id) || phases[0];
    showPart(target, part === 'threads' ? 'threads' : 'plugins');
    drawAxes(target);
    const row = /^\d+$/.test(part || '') && target.rows[Number(part)];
    if (row) go(row);
  };

  // Events.

  const rowAt = (target) => {
    const tr = target.closest('.plugins tbody tr');
    return tr ? phase.rows[Number(tr.id.split('-')[1])] : null;
  };
  const isField = (target) => /^(INPUT|SELECT|TEXTAREA)$/.test(target.tagName);

  const moveFocus = (row, key) => {
    const last = phase.shown.length - 1;
    const place = {ArrowUp: row.place - 1, ArrowDown: row.place + 1, Home: 0, End: last}[key];
    if (place === undefined) return false;
    phase.shown[Math.min(Math.max(place, 0), last)].tr.focus();
    return true;
  };

  const keys = {
    '+': () => zoomBy(2, middle()), '=': () => zoomBy(2, middle()), '-': () => zoomBy(0.5, middle()),
    '0': () => zoomTo(1, 0), 'ArrowLeft': () => moveBy(-0.25), 'ArrowRight': () => moveBy(0.25),
    'Escape': release,
  };

  const onKey = (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey || isField(event.target)) return;
    const row = rowAt(event.target);
    if (row && moveFocus(row, event.key)) return event.preventDefault();
    if (row && event.key === 'Enter') return pin(row);
    if (keys[event.key]) {
      event.preventDefault();
      keys[event.key]();
    }
  };

  const onWheel = (event) => {
    const cell = event.target.closest('.b');
    if (!cell) return;
    const sideways = event.shiftKey ? event.deltaY : event.deltaX;
    if (!event.ctrlKey && (sideways === 0 || phase.zoom === 1)) return;
    event.preventDefault();
    const area = cell.getBoundingClientRect();
    if (event.ctrlKey) zoomBy(event.deltaY < 0 ? 1.25 : 0.8, (event.clientX - area.left) / area.width);
    else moveBy(sideways / area.width);
  };

  let drag = null;  // {x, moved, width} while the pointer is down on the bars

  const onDrag = (event) => {
    if (!drag || phase.zoom === 1) return;
    const part = (drag.x - event.clientX) / drag.width;
    if (Math.abs(event.clientX - drag.start) > 3) drag.moved = true;
    drag.x = event.clientX;
    moveBy(part);
  };

  const listen = () => {
    const main = document.querySelector('main');
    byId('sort').addEventListener('change', arrangeAll);
    byId('result').addEventListener('change', arrangeAll);
    byId('filter').addEventListener('input', arrangeAll);
    byId('tools').addEventListener('submit', (event) => event.preventDefault());
    byId('zoom-in').addEventListener('click', keys['+']);
    byId('zoom-out').addEventListener('click', keys['-']);
    byId('zoom-all').addEventListener('click', keys['0']);
    byId('earlier').addEventListener('click', keys.ArrowLeft);
    byId('later').addEventListener('click', keys.ArrowRight);
    addEventListener('hashchange', showTarget);
    document.addEventListener('keydown', onKey);
    main.addEventListener('wheel', onWheel, {passive: false});
    main.addEventListener('pointerover', (event) => {
      const item = event.target.closest('.lanes svg[data-p]');
      const row = item ? phase.rows[item.dataset.p] : rowAt(event.target);
      if (row && !pinned && row !== current) draw(row);
    });
    main.addEventListener('pointerleave', (event) => {
      if (!pinned && !(event.relatedTarget && byId('details').contains(event.relatedTarget))) draw(null);
    });
    main.addEventListener('focusin', (event) => {
      const row = rowAt(event.target);
      if (!row) return;
      if (row !== current) draw(row);
      letOneRowTakeTheFocus(phase);
    });
    main.addEventListener('pointerdown', (event) => {
      const cell = event.target.closest('.b');
      if (cell) drag = {x: event.clientX, start: event.clientX, moved: false, width: cell.clientWidth};
    });
    addEventListener('pointermove', onDrag);
    addEventListener('pointerup', () => setTimeout(() => { drag = null; }));
    main.addEventListener('click', (event) => {
      if (drag && drag.moved) return;
      const item = event.target.closest('.lanes svg[data-p]');
      const row = item ? phase.rows[item.dataset.p] : rowAt(event.target);
      if (item) go(row);
      else if (row) pin(row);
    });
  };

  const addSortButtons = () => {
    for (const {titles} of phases) {
      for (const th of titles.filter((title) => title.dataset.sort)) {
        const button = element('button', th.textContent);
        button.type = 'button';
        button.addEventListener('click', () => {
          const again = byId('sort').value === th.dataset.sort;
          byId('sort').value = again ? 'begin' : th.dataset.sort;
          arrangeAll();
        });
        th.replaceChildren(button);
      }
    }
  };

  const keepTitlesBelowTheBar = () => {
    const bar = byId('bar');
    const set = () => document.documentElement.style.setProperty('--bar', `${bar.offsetHeight}px`);
    new ResizeObserver(set).observe(bar);
    set();
  };

  addSortButtons();
  byId('tools').hidden = false;
  byId('details').hidden = false;
  document.body.classList.add('with-details');
  keepTitlesBelowTheBar();
  arrangeAll();
  showDetails(null);
  listen();
  showTarget();
})();
