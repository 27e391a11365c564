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

// A worker that calls process.exit() from a getter which an addon's property read runs: Node refuses every later
// call into script from that worker's environment (it is going away), so an addon can tell the refused read from
// a getter that threw. Deno refuses the read with a pending exception but still runs a native function called
// right after, so through Node-API the ending worker looks like a live one whose getter threw.
//
// Run with any engine: deno run -A docs/engines/deno-worker-exit-leaves-script-running.js
// Needs cc and the Node-API headers in /usr/include/node. Exits 1 while the engine shows the fault.
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { execFileSync } = require('node:child_process');
const { Worker } = require('node:worker_threads');

const ADDON_SOURCE = `
#include <node_api.h>
static int verdict = -1; /* -1: not probed, 0: the call was refused, 1: it ran */
static napi_value Nothing(napi_env env, napi_callback_info info) { return NULL; }
static napi_value Verdict(napi_env env, napi_callback_info info) {
  napi_value result; napi_create_int32(env, verdict, &result); return result;
}
static napi_value ReadThenCall(napi_env env, napi_callback_info info) {
  size_t argc = 1; napi_value object, property, probe, receiver, exception;
  napi_get_cb_info(env, info, &argc, &object, NULL, NULL);
  if (napi_get_named_property(env, object, "x", &property) == napi_ok) return NULL;
  napi_get_and_clear_last_exception(env, &exception);
  napi_create_function(env, "probe", NAPI_AUTO_LENGTH, Nothing, NULL, &probe);
  napi_get_undefined(env, &receiver);
  verdict = napi_call_function(env, receiver, probe, 0, NULL, NULL) == napi_ok;
  return NULL;
}
NAPI_MODULE_INIT() {
  napi_value fn;
  napi_create_function(env, "readThenCall", NAPI_AUTO_LENGTH, ReadThenCall, NULL, &fn);
  napi_set_named_property(env, exports, "readThenCall", fn);
  napi_create_function(env, "verdict", NAPI_AUTO_LENGTH, Verdict, NULL, &fn);
  napi_set_named_property(env, exports, "verdict", fn);
  return exports;
}
`;

const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'worker-exit-'));
fs.writeFileSync(path.join(dir, 'probe.c'), ADDON_SOURCE);
const addon = path.join(dir, 'probe.node');
execFileSync('cc', ['-shared', '-fPIC', '-I/usr/include/node', '-o', addon, path.join(dir, 'probe.c')]);
const probe = { exports: {} };
process.dlopen(probe, addon);
const worker = new Worker(
  `const probe = { exports: {} };
   process.dlopen(probe, ${JSON.stringify(addon)});
   probe.exports.readThenCall({ get x() { process.exit(0); } });`,
  { eval: true },
);
worker.on('exit', () => {
  const verdict = probe.exports.verdict();
  fs.rmSync(dir, { recursive: true, force: true });
  console.log(`a native call after the refused read: ${['not made', 'refused', 'ran'][verdict + 1]}`);
  process.exitCode = verdict === 0 ? 0 : 1;
});
