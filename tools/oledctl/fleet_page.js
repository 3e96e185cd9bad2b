'use strict';
// The fleet page: every rule about keys and values lives in oledctl; the
// page sends what the operator typed and shows the server's answer.

// The token leaves the address bar (and the history, and what is shared
// of the screen) once read; the tab keeps it for a reload.
const token = (() => {
  const given = new URLSearchParams(location.search).get('token');
  if (given) {
    sessionStorage.setItem('token', given);
    history.replaceState(null, '', location.pathname);
  }
  return sessionStorage.getItem('token') ||
    (prompt('The session token, from the file oledctl serve named when it started:') || '').trim();
})();
const refreshSeconds = 10;
// The columns after the panel type, by command key, and their headings.
const columns = [
  ['cpu', 'cpu'], ['vi', 'vi'], ['ai', 'ai'], ['net', 'net'], ['venc', 'venc'], ['temp', 'temp'],
  ['time', 'time'], ['io', 'io'], ['logo', 'logo'], ['sleep', 'sleep s'], ['oled_string', 'text'],
  ['oled_str_en', 'shown'], ['led_on', 'on'], ['pwr_led', 'pwr pin'], ['cpu_led', 'cpu pin'],
  ['eth_led', 'eth pin'], ['hdmi_led', 'video pin'],
];
const keys = new Map();  // command key -> {kind, min, max, setting, meaning}
let panels = [];
let refreshing = false;

const $ = (id) => document.getElementById(id);

function say(text, kind) {
  const message = $('message');
  message.textContent = text;
  message.className = kind || '';
}

async function api(method, path, body) {
  const request = { method, headers: { 'X-Fleet-Token': token } };
  if (body !== undefined) {
    request.headers['Content-Type'] = 'application/json';
    request.body = JSON.stringify(body);
  }
  let response;
  try {
    response = await fetch(path, request);
  } catch (error) {
    return { status: 0, data: { error: 'oledctl serve does not answer: ' + error.message } };
  }
  const data = await response.json().catch(() => ({ error: 'unreadable answer' }));
  if (response.status === 403) data.error += ' (reopen the page with ?token= and the token from the file oledctl serve named)';
  return { status: response.status, data };
}

function clock(seconds) {
  return new Date(seconds * 1000).toTimeString().slice(0, 8);
}

// A flag as the box reads it: a leading number, -1 when there is none.
function isOn(value) {
  return /^-?[0-9]/.test(value) ? Number.parseInt(value, 10) !== 0 : true;
}

function isSwitch(key) {
  const command = keys.get(key);
  return command.kind === 'integer' && command.min === 0 && command.max === 1;
}

function addressOrder(address) {
  return address.split('.').reduce((number, part) => number * 256 + Number(part), 0);
}

function rows() {
  return Array.from(document.querySelectorAll('#boxes tbody tr'));
}

function selectedAddresses() {
  return rows().filter((row) => row.querySelector('.select').checked).map((row) => row.dataset.address);
}

function countSelected() {
  $('selected').textContent = selectedAddresses().length;
}

function cell(row, content, className) {
  const td = document.createElement('td');
  if (className) td.className = className;
  if (content) td.append(content);
  row.append(td);
  return td;
}

function button(text, action) {
  const b = document.createElement('button');
  b.type = 'button';
  b.textContent = text;
  b.addEventListener('click', action);
  return b;
}

function control(address, key) {
  const command = keys.get(key);
  let input;
  if (key === 'oled_type') {
    input = document.createElement('select');
    panels.forEach((name, type) => input.add(new Option(type + ' ' + name, String(type))));
  } else {
    input = document.createElement('input');
    input.type = isSwitch(key) ? 'checkbox' : 'text';
    if (input.type === 'text') input.className = command.kind === 'text' ? 'text' : command.kind === 'pin' ? 'pin' : 'sleep';
  }
  input.dataset.key = key;
  input.title = key + ': ' + command.meaning;
  input.addEventListener('change', () => {
    const value = input.type === 'checkbox' ? (input.checked ? '1' : '0') : input.value;
    change([address], [key + '=' + value], input);
  });
  return input;
}

function makeRow(address) {
  const row = document.createElement('tr');
  row.dataset.address = address;
  const select = document.createElement('input');
  select.type = 'checkbox';
  select.className = 'select';
  select.setAttribute('aria-label', 'select ' + address);
  select.addEventListener('change', countSelected);
  cell(row, select);
  cell(row, address, 'address');
  cell(row, null, 'state');
  cell(row, control(address, 'oled_type'));
  for (const [key] of columns) cell(row, control(address, key));
  const test = cell(row, null, 'test');
  test.append(button('test on', () => ledTest([address], true)), ' ', button('off', () => ledTest([address], false)));
  cell(row, button('read', () => readBox(address)));
  return row;
}

// Shows a box as the server last heard it; a field the operator is
// editing keeps what is typed.
function show(box) {
  const body = document.querySelector('#boxes tbody');
  let row = body.querySelector('tr[data-address="' + box.address + '"]');
  if (!row) {
    row = makeRow(box.address);
    const after = rows().find((other) => addressOrder(other.dataset.address) > addressOrder(box.address));
    body.insertBefore(row, after || null);
  }
  row.classList.toggle('silent', !box.answering);
  row.classList.toggle('refusing', box.refusals > 0);
  row.querySelector('.state').textContent = (box.answering ? 'answers'
    : box.last_answer ? 'no answer since ' + clock(box.last_answer) : 'no answer')
    + (box.refusals > 0 ? '; refused ' + box.refusals + ' since its start' : '');
  for (const input of row.querySelectorAll('[data-key]')) {
    const value = box.settings[keys.get(input.dataset.key).setting];
    if (value === undefined || input === document.activeElement) continue;
    if (input.type === 'checkbox') input.checked = isOn(value);
    else input.value = value;
    input.classList.remove('refused');
  }
  $('empty').hidden = true;
}

function markBusy(addresses, busy) {
  for (const row of rows()) {
    if (addresses.includes(row.dataset.address)) row.classList.toggle('busy', busy);
  }
}

function reportBoxes(what, boxes) {
  boxes.forEach(show);
  const silent = boxes.filter((box) => !box.answering).map((box) => box.address);
  if (silent.length) say(what + '; no answer from ' + silent.join(', '), 'refused');
  else say(what + '; settings as the boxes sent them back', 'done');
}

async function change(addresses, items, input) {
  markBusy(addresses, true);
  const { status, data } = await api('POST', '/api/set', { boxes: addresses, items });
  markBusy(addresses, false);
  if (status !== 200) {
    if (input) input.classList.add('refused');
    say(data.error, 'refused');
    return;
  }
  if (input) input.classList.remove('refused');
  reportBoxes(items.join('|') + ' sent to ' + addresses.join(', '), data.boxes);
}

async function ledTest(addresses, on) {
  markBusy(addresses, true);
  const { status, data } = await api('POST', '/api/led-test', { boxes: addresses, on });
  markBusy(addresses, false);
  if (status !== 200) return say(data.error, 'refused');
  reportBoxes('LED test ' + (on ? 'on' : 'off') + ' at ' + addresses.join(', '), data.boxes);
}

async function readBox(address) {
  markBusy([address], true);
  const { status, data } = await api('GET', '/api/boxes/' + address);
  markBusy([address], false);
  if (status === 200) return reportBoxes('read ' + address, [data]);
  if (data.box) show(data.box);
  say(data.error, 'refused');
}

async function refresh() {
  if (refreshing) return;
  refreshing = true;
  const { status, data } = await api('GET', '/api/boxes');
  refreshing = false;
  if (status !== 200) return say(data.error, 'refused');
  data.boxes.forEach(show);
  $('asked').textContent = data.boxes.length + ' boxes, asked at ' + clock(Date.now() / 1000);
}

function bulk(action) {
  const addresses = selectedAddresses();
  if (!addresses.length) return say('select boxes first (the first column)', 'refused');
  action(addresses);
}

async function start() {
  const { status, data } = await api('GET', '/api/keys');
  if (status !== 200) return say(data.error, 'refused');
  panels = data.panels;
  for (const command of data.keys) {
    keys.set(command.key, command);
    if (command.key !== 'test') $('bulk-key').add(new Option(command.key + ' (' + command.meaning + ')', command.key));
  }
  for (const [key, heading] of columns) {
    const th = document.createElement('th');
    th.textContent = heading;
    th.title = key + ': ' + keys.get(key).meaning;
    $('columns').append(th);
  }
  $('columns').append(document.createElement('th'), document.createElement('th'));
  $('every').textContent = refreshSeconds;
  $('refresh').addEventListener('click', refresh);
  $('select-all').addEventListener('change', () => {
    for (const row of rows()) row.querySelector('.select').checked = $('select-all').checked;
    countSelected();
  });
  $('bulk-apply').addEventListener('click', () => bulk((addresses) =>
    change(addresses, [$('bulk-key').value + '=' + $('bulk-value').value], $('bulk-value'))));
  $('bulk-test-on').addEventListener('click', () => bulk((addresses) => ledTest(addresses, true)));
  $('bulk-test-off').addEventListener('click', () => bulk((addresses) => ledTest(addresses, false)));
  setInterval(() => { if ($('auto').checked) refresh(); }, refreshSeconds * 1000);
  refresh();
}

start();
