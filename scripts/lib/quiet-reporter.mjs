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
// A node:test reporter for people: each failure in full as it happens, then one line per suite file (its tests,
// failures and time). A suite file whose process fails after its tests (a sanitizer's report at exit, a crash)
// shows what that process wrote to stderr. The complete TAP goes to a file through a second reporter
// (scripts/lib/steps.sh).
import path from 'node:path';
import { inspect } from 'node:util';

function fileOf(data) {
  return data.file ? path.relative(process.cwd(), data.file) : '(no file)';
}

// The most of a failed suite file's stderr shown; the TAP file keeps all of it.
const STDERR_LINES_SHOWN = 400;

function indent(text) {
  return text.replace(/^/gm, '  ');
}

function processEnd(error, stderr) {
  const how = error.signal ? `was killed by ${error.signal}` : `exited with code ${error.exitCode}`;
  const lines = stderr.join('').trimEnd().split('\n');
  const shown = lines.slice(-STDERR_LINES_SHOWN).join('\n');
  const cut = lines.length > STDERR_LINES_SHOWN ? ` (its last ${STDERR_LINES_SHOWN} lines)` : '';
  return `  the suite file's process ${how}; its stderr${cut}:\n${indent(shown || '(nothing)')}\n`;
}

function failure(data, names, stderr) {
  const error = data.details.error;
  const shown = error && error.failureType === 'testCodeFailure' && error.cause ? error.cause : error;
  const where = [...names.slice(0, data.nesting), data.name].join(' > ');
  const ended = error && (error.exitCode !== undefined || error.signal) ? processEnd(error, stderr) : '';
  return `\nFAIL ${fileOf(data)}: ${where}\n${indent(inspect(shown, { depth: 4 }))}\n${ended}\n`;
}

export default async function* quietReporter(source) {
  const files = new Map();
  // The names of the groups a test is nested in, per file, as the runner announces them.
  const opened = new Map();
  // What each suite file's process wrote to stderr, shown if that process fails.
  const stderrOf = new Map();
  let otherFailures = 0;
  for await (const { type, data } of source) {
    if (type === 'test:stderr') {
      const chunks = stderrOf.get(data.file) || [];
      chunks.push(data.message);
      stderrOf.set(data.file, chunks);
    } else if (type === 'test:start') {
      const names = opened.get(data.file) || [];
      names.length = data.nesting;
      names.push(data.name);
      opened.set(data.file, names);
    } else if (type === 'test:pass' || type === 'test:fail') {
      const file = fileOf(data);
      const entry = files.get(file) || { tests: 0, failed: 0, skipped: 0, ms: 0 };
      files.set(file, entry);
      const isSuite = data.details.type === 'suite';
      if (data.nesting === 0) entry.ms += data.details.duration_ms || 0;
      if (type === 'test:fail') {
        const subtestsFailed = data.details.error && data.details.error.failureType === 'subtestsFailed';
        if (!subtestsFailed) {
          if (!isSuite) entry.failed += 1;
          else otherFailures += 1;
          yield failure(data, opened.get(data.file) || [], stderrOf.get(data.file) || []);
        }
      }
      if (!isSuite) {
        entry.tests += 1;
        if (data.skip || data.todo) entry.skipped += 1;
      }
    }
  }
  let failed = otherFailures;
  for (const [file, entry] of [...files].sort(([a], [b]) => a.localeCompare(b))) {
    failed += entry.failed;
    const verdict = entry.failed > 0 ? 'FAIL' : 'ok  ';
    const tests = `${entry.tests} test${entry.tests === 1 ? '' : 's'}`;
    const counts = entry.failed > 0 ? `${entry.failed} of ${tests} failed` : tests;
    const skipped = entry.skipped > 0 ? `, ${entry.skipped} skipped` : '';
    yield `${verdict} ${file.padEnd(32)} ${counts}${skipped} (${(entry.ms / 1000).toFixed(1)} s)\n`;
  }
  if (failed > 0) yield `${failed} failed\n`;
}
