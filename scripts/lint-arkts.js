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

// The ArkTS gate: compiles the declaration with the platform's compiler (api/tsconfig.json), then type-checks and
// ArkTS-lints every .ets file of the tree the way the platform's build does. Prints each finding as
// file:line:col code message; fails on any error and on a "may throw" warning in the tree's own code.
//
// Usage: node scripts/lint-arkts.js [FILE.ets...]   (default: every .ets file git knows of, tracked or new)
const { execFileSync } = require('node:child_process');
const path = require('node:path');
const ts = require('ohos-typescript');

const repoRoot = path.resolve(__dirname, '..');
const MAY_THROW = 28040;

// The configuration the platform's build hands the compiler for ArkTS sources; `ets` names the UI components and
// decorators of a page's build() so that their trailing-block syntax parses.
const arktsOptions = {
  target: ts.ScriptTarget.ES2021,
  module: ts.ModuleKind.ES2020,
  moduleResolution: ts.ModuleResolutionKind.NodeJs,
  strict: true,
  noEmit: true,
  experimentalDecorators: true,
  lib: ['lib.es2021.d.ts'],
  types: [],
  baseUrl: repoRoot,
  paths: {
    '@ohos.carService.rovanta': ['api/@ohos.carService.rovanta.d.ts'],
    '@ohos/hypium': ['node_modules/@ohos/hypium/index.d.ts'],
  },
  etsLoaderPath: 'null_sdkPath',
  needDoArkTsLinter: true,
  ets: {
    components: ['Column', 'Text'],
    render: { method: ['build'], decorator: ['Builder'] },
    extend: { decorator: ['Extend'], components: [] },
    styles: {
      decorator: 'Styles',
      component: { name: 'Common', type: 'T', instance: 'CommonInstance' },
      property: 'stateStyles',
    },
    syntaxComponents: { paramsUICallback: [], attrUICallback: [] },
    customComponent: 'CustomComponent',
  },
};

function etsFiles() {
  const listed = execFileSync('git', ['ls-files', '--cached', '--others', '--exclude-standard', '*.ets'], {
    cwd: repoRoot,
    encoding: 'utf8',
  });
  return listed
    .split('\n')
    .filter((file) => file !== '' && !/(^|\/)(node_modules|build)\//.test(file))
    .map((file) => path.join(repoRoot, file));
}

function isOwnCode(diagnostic) {
  return diagnostic.file !== undefined && !diagnostic.file.fileName.includes('/node_modules/');
}

// Errors fail the run; of the warnings only "may throw" in the tree's own code does.
function fails(diagnostic) {
  return (
    diagnostic.category === ts.DiagnosticCategory.Error || (diagnostic.code === MAY_THROW && isOwnCode(diagnostic))
  );
}

function format(diagnostic) {
  const message = ts.flattenDiagnosticMessageText(diagnostic.messageText, ' ');
  const severity = diagnostic.category === ts.DiagnosticCategory.Error ? 'error' : 'warning';
  if (diagnostic.file === undefined) {
    return `${severity} TS${diagnostic.code} ${message}`;
  }
  const { line, character } = diagnostic.file.getLineAndCharacterOfPosition(diagnostic.start);
  const file = path.relative(repoRoot, diagnostic.file.fileName);
  return `${file}:${line + 1}:${character + 1} ${severity} TS${diagnostic.code} ${message}`;
}

function declarationDiagnostics() {
  const config = ts.getParsedCommandLineOfConfigFile(path.join(repoRoot, 'api/tsconfig.json'), {}, {
    ...ts.sys,
    onUnRecoverableConfigFileDiagnostic: (diagnostic) => {
      throw new Error(format(diagnostic));
    },
  });
  const program = ts.createProgram({ rootNames: config.fileNames, options: config.options });
  return [...config.errors, ...ts.getPreEmitDiagnostics(program)];
}

function arktsDiagnostics(files) {
  const rootNames = [path.join(repoRoot, 'host/sdk/arkts-globals.d.ts'), ...files];
  const program = ts.createIncrementalProgramForArkTs({ rootNames, options: arktsOptions });
  return [
    ...ts.getPreEmitDiagnostics(program.getProgram()),
    ...ts.ArkTSLinter_1_1.runArkTSLinter(program, undefined, undefined, 'ArkTS_1_1'),
  ];
}

const files = process.argv.length > 2 ? process.argv.slice(2).map((file) => path.resolve(file)) : etsFiles();
const diagnostics = [...declarationDiagnostics(), ...arktsDiagnostics(files)];
diagnostics.forEach((diagnostic) => console.log(format(diagnostic)));
const failures = diagnostics.filter(fails).length;
console.log(`lint:arkts: ${files.length} .ets files, ${diagnostics.length} findings, ${failures} failing`);
process.exitCode = failures === 0 && files.length > 0 ? 0 : 1;
