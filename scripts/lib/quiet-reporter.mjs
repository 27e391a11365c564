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
// failures and time). The complete TAP goes to a file through a second reporter (scripts/lib/steps.sh).
import path from 'node:path';
import { inspect } from 'node:util';

function fileOf(data) {
  return data.file ? path.relative(process.cwd(), data.file) : '(no file)';
}

function failure(data, names) {
  const error = data.details.error;
  const shown = error && error.failureType === 'testCodeFailure' && error.cause ? error.cause : error;
  const where = [...names.slice(0, data.nesting), data.name].join(' > ');
  return `\nFAIL ${fileOf(data)}: ${where}\n${inspect(shown, { depth: 4 }).replace(/^/gm, '  ')}\n\n`;
}

export default async function* quietReporter(source) {
  const files = new Map();
  // The names of the groups a test is nested in, per file, as the runner announces them.
  const opened = new Map();
  let otherFailures = 0;
  for await (const { type, data } of source) {
    if (type === 'test:start') {
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
          yield failure(data, opened.get(data.file) || []);
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
