/*
 * Copyright (c) 2026 The rovanta Authors
 * Licensed under the Apache License, Version 2.0 (the "License");
 * you may not use this file except in compliance with the License.
 * You may obtain a copy of the License at
 *
 *     http://www.apache.org/licenses/LICENSE-2.0
 *
 * Unless required by applicable law or agreed to in writing, software
 * distributed under the License is distributed on an "AS IS" BASIS,
 * WITHOUT WARRANTIES OR CONDITIONS OF ANY KIND, either express or implied.
 * See the License for the specific language governing permissions and
 * limitations under the License.
 */

'use strict';

// The behaviour tables of docs/api.md, read row by row and held against the running module: a row that drifts
// from what the module does fails here.
const test = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { host, rovanta, CONNECT_PERMISSION, resetHost, validListener, until, completedRegistrations } =
  require('./support/rovanta');
const { PRELUDE, runChild, assertCleanExit } = require('./support/child');

const API_DOC = fs.readFileSync(path.join(__dirname, '..', 'docs', 'api.md'), 'utf8');

// The text of the section that starts at `heading` and ends at the next heading of the same or a higher level.
function section(heading) {
  const start = API_DOC.indexOf(`\n${heading}\n`);
  assert.notEqual(start, -1, `docs/api.md has no heading "${heading}"`);
  const level = heading.match(/^#+/)[0].length;
  const rest = API_DOC.slice(start + heading.length + 2);
  const next = rest.search(new RegExp(`^#{1,${level}} `, 'm'));
  return next === -1 ? rest : rest.slice(0, next);
}

// The body rows of every table in `text`, each an array of its cells.
function tableRows(text) {
  return text
    .split('\n')
    .filter((line) => line.startsWith('| ') && !/^\|[-| ]+\|$/.test(line))
    .map((line) => line.slice(2, -2).split(' | '))
    .filter((cells) => !isHeader(cells));
}

function isHeader(cells) {
  return ['Call', 'Value', '`code`', 'Level'].includes(cells[0]);
}

function codeSpans(cell) {
  return [...cell.matchAll(/`([^`]+)`/g)].map((match) => match[1]);
}

// Runs `expression` (a call on `adapter`, in the docs' own words) with `adapter`, `f` and `listener` in scope.
function evaluate(expression, scope) {
  return new Function(...Object.keys(scope), `return ${expression};`)(...Object.values(scope));
}

test.beforeEach(resetHost);

test.describe('docs/api.md: every argument list, by method', () => {
  const rows = tableRows(section('### Every argument list, by method'));

  test('the table covers every method of the adapter', () => {
    const methods = new Set(rows.map(([call]) => codeSpans(call)[0].split('(')[0]));
    const declared = Object.getOwnPropertyNames(rovanta.CarAdapterClient.prototype).filter((n) => n !== 'constructor');
    assert.deepEqual([...methods].sort(), declared.sort());
  });

  for (const [callCell, outcome] of rows) {
    const call = codeSpans(callCell)[0];
    test(`${call}: ${outcome.replace(/`/g, '')}`, async () => {
      const adapter = rovanta.getCarConnectAdapter();
      const received = [];
      const f = (...args) => received.push(args);
      const registrationsBefore = completedRegistrations();
      const scope = { adapter, f, listener: validListener() };
      const thrown = outcome.match(/^throws `"(\d+)"`$/);
      if (thrown) {
        assert.throws(() => evaluate(`adapter.${call}`, scope), { code: thrown[1], message: 'Invalid input parameter.' });
        return;
      }
      const result = evaluate(`adapter.${call}`, scope);
      if (outcome.startsWith('promise')) {
        assert.ok(result instanceof Promise, `${call} returns ${result}`);
        await host.within(result, `${call} to settle`);
        await host.mainRunner.whenIdle();
        if (outcome === 'promise, `f` never called') assert.deepEqual(received, []);
      } else if (outcome === 'callback') {
        assert.equal(result, undefined);
        await until(() => received.length > 0, `the callback of ${call}`);
        await host.mainRunner.whenIdle();
        assert.equal(received.length, 1);
        assert.equal(received[0].length, 1);
        assert.equal(typeof received[0][0], 'number');
      } else {
        const returned = outcome.match(/^returns (?:`(\d+)`|(undefined))$/);
        assert.ok(returned, `no outcome called "${outcome}" is known`);
        assert.equal(result, returned[1] === undefined ? undefined : Number(returned[1]));
      }
      // Every registerConnectListener that passed the gate registers with the car; none may spill into the next row.
      if (call.startsWith('registerConnectListener')) {
        await until(() => completedRegistrations() > registrationsBefore, 'the registration of the call');
      }
    });
  }
});

test('docs/api.md: each number of the number-to-text table reaches the car as the text shown', async () => {
  const rows = tableRows(section('## Service operations')).filter((cells) => cells.length === 2 && /^`".*"`$/.test(cells[1]));
  assert.ok(rows.length >= 10, 'the number-to-text table is there');
  const map = Object.fromEntries(rows.map(([value], index) => [`k${index}`, evaluate(codeSpans(value)[0], {})]));
  await rovanta.getCarConnectAdapter().bindTarget(1, map);
  const [, sent] = host.carService.calls().find((c) => c.member === 'StartBindTarget').args;
  rows.forEach(([value, text], index) => assert.equal(sent[`k${index}`], JSON.parse(codeSpans(text)[0]), value));
});

test('docs/api.md: each error code comes with the message the error tables give it', () => {
  const rows = [...tableRows(section('## The gate: errors every call may throw')),
    ...tableRows(section('## Service operations'))].filter((cells) => cells.length === 3 && /^`"\d+"`$/.test(cells[0]));
  // How to meet each code: the caller's identity, then a call.
  const causes = {
    202: { identity: () => host.identity.set({ systemApp: false }), call: 'castOperation(1)' },
    201: { identity: () => host.permissions.revoke(CONNECT_PERMISSION), call: 'castOperation(1)' },
    401: { identity: () => {}, call: 'castOperation()' },
    0: { identity: () => {}, call: 'castOperation(1, 2)' },
  };
  assert.deepEqual(rows.map(([code]) => JSON.parse(codeSpans(code)[0])).sort(), Object.keys(causes).sort());
  for (const [codeCell, messageCell] of rows) {
    const code = JSON.parse(codeSpans(codeCell)[0]);
    const adapter = rovanta.getCarConnectAdapter();
    causes[code].identity();
    assert.throws(() => evaluate(`adapter.${causes[code].call}`, { adapter }), { code, message: codeSpans(messageCell)[0] });
    resetHost();
  }
});

test('docs/api.md: texts from the car end at their first NUL, as the example shows', async () => {
  const [, sent, arrived] = API_DOC.match(/`"(\w+)\\0(\w+)"` from the car arrives as `"(\w+)"`/) || [];
  assert.ok(sent, 'the example is there');
  host.carService.setDeviceInfo(`${sent}\0${arrived}`);
  assert.equal(await rovanta.getCarConnectAdapter().getDeviceInfo(0), sent);
});

// A line of the tables as a regular expression: a placeholder matches any text, and the same text where it recurs.
function linePattern(line) {
  const seen = [];
  const source = line.split(/(<[^>]+>)/).map((part, index) => {
    if (index % 2 === 0) return part.replace(/[.*+?^${}()|[\]\\]/g, '\\$&');
    if (seen.includes(part)) return `\\${seen.indexOf(part) + 1}`;
    seen.push(part);
    return '(.+)';
  });
  return new RegExp(`^${source.join('')}$`);
}

// A row of the log tables as a pattern: its level, tag, thread and the line's text with placeholders.
function logRows() {
  return tableRows(section('## Log lines')).flatMap(([levelCell, thread, lineCell]) => {
    const tag = (levelCell.match(/tag `(\w+)`/) || [null, 'TravelVexarNapi'])[1];
    const level = levelCell.split(' ')[0];
    return codeSpans(lineCell).filter((span) => span.includes('# ')).map((line) => ({
      level, thread, tag, line,
      pattern: linePattern(line),
      literal: line.replace(/<[^>]+>/g, '').length,
    }));
  });
}

test('docs/api.md: every line the module logs in a whole session is in the log tables, at its level and thread', () => {
  const calls = tableRows(section('### Every argument list, by method')).map(([call]) => codeSpans(call)[0]);
  const child = runChild(`${PRELUDE}
    const f = () => {};
    const settled = (value) => value instanceof Promise ? value : undefined;
    const count = (text) => host.hilog.lines().filter((l) => l.text.startsWith(text)).length;
    // A registration ends with its success line or with the third of its failure lines.
    const ended = () => count('InitCallback# InitCallback success') + count('InitCallback# InitCallback failed') / 3;
    (async () => {
      rovanta.DiscoveryMode;
      new rovanta.CarAdapterClient();
      host.identity.set({ systemApp: false });
      try { rovanta.getCarConnectAdapter(); } catch {}
      host.identity.reset();
      host.permissions.revoke(${JSON.stringify(CONNECT_PERMISSION)});
      try { rovanta.getCarConnectAdapter(); } catch {}
      host.identity.reset();
      const adapter = rovanta.getCarConnectAdapter();
      for (const call of ${JSON.stringify(calls)}) {
        try { await settled(new Function('adapter', 'f', 'listener', 'return adapter.' + call)(adapter, f, listener())); } catch {}
      }
      host.carService.setDeviceInfo('info');
      await adapter.getDeviceInfo(0);
      adapter.registerConnectListener('all', listener({ onDeviceChange() { throw new Error('thrown'); },
        onDeviceServiceStateChange() {}, onSurfaceTransferOnEvent() {}, onDisconnectResult() {} }));
      await registered();
      for (const [callback, ...args] of [['OnBindResult', 'd', 1, 2, 'c'], ['OnDataReceive', 1, 'x'],
        ['OnDeviceStateChange', 1, 'i'], ['OnDeviceChange', 1], ['OnDeviceServiceStateChange', 's', 1, 2],
        ['OnSurfaceTransferOnEvent', 1, 2, 'c'], ['OnDisconnectResult', 0]]) host.carService.emit(callback, ...args);
      await host.mainRunner.whenIdle();
      adapter.registerConnectListener('all', listener());
      await adapter.startSurfaceTransfer({ o: {} });
      adapter.unregisterConnectListener();
      host.carService.failRegistrations(3);
      adapter.registerConnectListener('none', listener());
      await host.waitUntil(() => ended() === host.hilog.lines().filter((l) => l.text === 'InitCallback# InitCallback').length,
        'every registration to end', 5000);
    })().catch((error) => { console.error(error); process.exitCode = 1; });
  `, { env: { HILOG_STDERR: '1' } });
  assertCleanExit(child);
  const rows = logRows();
  const seen = child.stderr.split('\n').map((text) => text.match(/^\S+ \S+ +(\d+) +(\d+) ([DIWEF]) C05400\/(\w+): (.*)$/))
    .filter(Boolean);
  assert.ok(seen.length > 100, `a whole session logs: ${child.stderr.slice(0, 2000)}`);
  const LEVELS = { I: 'INFO', W: 'WARN', E: 'ERROR', D: 'DEBUG', F: 'FATAL' };
  for (const [, pid, tid, letter, tag, text] of seen) {
    // The row most specific to the line: the one with the most literal text.
    const row = rows.filter((r) => r.pattern.test(text) && r.level === LEVELS[letter] && r.tag === tag)
      .sort((first, second) => second.literal - first.literal)[0];
    assert.ok(row, `the module logs ${LEVELS[letter]} ${tag} "${text}", which no row of the log tables holds`);
    if (row.thread === 'script') assert.equal(tid, pid, `"${text}" is logged off the script thread`);
    else assert.notEqual(tid, pid, `"${text}" is logged on the script thread, the table says ${row.thread}`);
  }
});
