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

// Prints the reliability table: the stress figures, the property tests and the memory figures, each run on the
// plain build and, where it applies, on the AddressSanitizer/UBSan and ThreadSanitizer builds.
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const repo = path.join(__dirname, '..');
if (process.argv.length > 2) {
  console.error(`scripts/reliability.js: unknown option '${process.argv[2]}' (it takes none)`);
  process.exit(2);
}
const FINDING = /ERROR: AddressSanitizer|ERROR: LeakSanitizer|WARNING: ThreadSanitizer|runtime error:/g;

function run(label, command, args, env = {}) {
  const reportFile = path.join(os.tmpdir(), `rovanta-reliability-${process.pid}-${label.replace(/\W+/g, '-')}.jsonl`);
  fs.rmSync(reportFile, { force: true });
  process.stderr.write(`running ${label}...\n`);
  const child = spawnSync(command, args, {
    cwd: repo,
    encoding: 'utf8',
    maxBuffer: 256 * 1024 * 1024,
    env: { ...process.env, ROVANTA_REPORT_FILE: reportFile, ...env },
  });
  const output = `${child.stdout}${child.stderr}`;
  const reports = fs.existsSync(reportFile)
    ? fs.readFileSync(reportFile, 'utf8').trim().split('\n').filter(Boolean).map((line) => JSON.parse(line))
    : [];
  fs.rmSync(reportFile, { force: true });
  return { label, passed: child.status === 0, findings: (output.match(FINDING) || []).length, reports, output };
}

function suites(build, files) {
  const nodeArgs = ['--test', ...files.map((file) => `test/${file}`)];
  if (build === 'plain') return run(`${build}`, process.execPath, nodeArgs);
  return run(build, path.join(repo, 'scripts', 'with-sanitizer'), [build, 'node', ...nodeArgs]);
}

function stressRow(result) {
  const stress = result.reports.find((r) => r.suite === 'stress');
  if (!stress) return ['-', '-', '-', '-', '-', '-'];
  return [stress.emitted, stress.delivered, stress.dropped, stress.duplicated, stress.adaptersReplaced, stress.seconds.toFixed(1)];
}

function propertyRow(result) {
  const properties = result.reports.filter((r) => r.suite === 'property');
  const cases = properties.reduce((sum, r) => sum + r.runs, 0);
  const perMethod = properties.length ? Math.round(cases / properties.length) : 0;
  const failures = result.passed ? 0 : 'see log';
  return `${properties.length} methods x ${perMethod} cases = ${cases}, failures ${failures}`;
}

function leakFigures() {
  const child = spawnSync(process.execPath, ['--expose-gc', path.join(repo, 'bench', 'leak.js')], { encoding: 'utf8' });
  if (child.status !== 0) return [`failed: ${child.stderr.trim()}`];
  return child.stdout
    .trim()
    .split('\n')
    .map((line) => JSON.parse(line))
    .map((phase) => `${phase.count} ${phase.phase}: RSS ${phase.growth >= 0 ? '+' : ''}${(phase.growth / 1048576).toFixed(2)} MiB`);
}

function table(header, rows) {
  const widths = header.map((_, column) => Math.max(...[header, ...rows].map((row) => String(row[column]).length)));
  const line = (row) => `| ${row.map((cell, column) => String(cell).padEnd(widths[column])).join(' | ')} |`;
  return [line(header), line(widths.map((w) => '-'.repeat(w))), ...rows.map(line)].join('\n');
}

function verdict(result) {
  if (result.passed && result.findings === 0) return 'pass, 0 findings';
  return `FAILED (${result.findings} sanitizer findings)`;
}

const plain = suites('plain', ['stress.test.js', 'property.test.js', 'leaks.test.js']);
const asan = suites('asan', ['stress.test.js', 'property.test.js', 'teardown.test.js']);
const tsan = suites('tsan', ['stress.test.js']);
const leaks = leakFigures();

const rows = [
  ['stress', 'plain', ...stressRow(plain), verdict(plain)],
  ['stress', 'ASan+UBSan+LSan', ...stressRow(asan), verdict(asan)],
  ['stress', 'TSan', ...stressRow(tsan), verdict(tsan)],
];
console.log(table(['suite', 'build', 'emitted', 'delivered', 'dropped', 'duplicated', 'adapters replaced', 'seconds', 'result'], rows));
console.log();
console.log(
  table(
    ['check', 'build', 'figures', 'result'],
    [
      ['property tests', 'plain', propertyRow(plain), verdict(plain)],
      ['property tests', 'ASan+UBSan+LSan', propertyRow(asan), verdict(asan)],
      ['memory (RSS)', 'plain', leaks.join('; '), plain.passed ? 'within 4 MiB' : 'see log'],
      ['leaks (LSan at exit)', 'ASan+UBSan+LSan', 'stress, property and teardown suites', verdict(asan)],
    ],
  ),
);
console.log();
console.log('"dropped": events emitted while their listener was being replaced, reaching no listener (allowed);');
console.log('listeners that stayed subscribed for a whole burst lost none (checked by the stress suite).');

const failed = [plain, asan, tsan].filter((result) => !result.passed || result.findings > 0);
for (const result of failed) process.stderr.write(`\n--- ${result.label} output ---\n${result.output.slice(-20000)}\n`);
process.exitCode = failed.length ? 1 : 0;
