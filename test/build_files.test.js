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

// Checks on the device build description, which the host build never reads:
// the platform build refuses parts that bundle.json does not declare, and a
// wrong install dir or output name leaves the module where the loader never looks.
'use strict';

const { describe, it } = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const repoRoot = path.resolve(__dirname, '..');
const moduleName = 'carService.rovanta';

function findGnFiles(dir) {
  return fs.readdirSync(dir, { withFileTypes: true }).flatMap((entry) => {
    const entryPath = path.join(dir, entry.name);
    if (entry.isDirectory()) {
      const skipped = entry.name.startsWith('.') || entry.name === 'build' || entry.name === 'node_modules';
      return skipped ? [] : findGnFiles(entryPath);
    }
    return entry.name.endsWith('.gn') ? [entryPath] : [];
  });
}

// Removes comments, leaving string literals (which may hold '#') intact.
function stripGnComments(text) {
  return text.replace(/"(?:[^"\\]|\\.)*"|#[^\n]*/g, (match) => (match.startsWith('#') ? '' : match));
}

// Returns the targets of a GN file as { template, name, body } with the body
// between the target's braces (nested scopes such as sanitize included).
function parseGnTargets(text) {
  const source = stripGnComments(text);
  const targets = [];
  const header = /(\w+)\(\s*"([^"]+)"\s*\)\s*\{/g;
  let match;
  while ((match = header.exec(source)) !== null) {
    let depth = 1;
    let index = header.lastIndex;
    for (; depth > 0 && index < source.length; ++index) {
      if (source[index] === '"') {
        index = source.indexOf('"', index + 1);
      } else if (source[index] === '{') {
        ++depth;
      } else if (source[index] === '}') {
        --depth;
      }
    }
    assert.equal(depth, 0, `unbalanced braces in target ${match[2]}`);
    targets.push({ template: match[1], name: match[2], body: source.slice(header.lastIndex, index - 1) });
    header.lastIndex = index;
  }
  return targets;
}

// Every string of every "name = [...]" and "name += [...]" in a target body.
function gnListValues(body, name) {
  const lists = [...body.matchAll(new RegExp(`\\b${name}\\s*\\+?=\\s*\\[([^\\]]*)\\]`, 'g'))];
  return lists.flatMap((list) => [...list[1].matchAll(/"([^"]*)"/g)].map((value) => value[1]));
}

function gnStringValue(body, name) {
  const match = body.match(new RegExp(`\\b${name}\\s*=\\s*"([^"]*)"`));
  return match ? match[1] : undefined;
}

// Where the platform loader looks for a system module, relative to its module
// directory: lower-cased, split at the last dot, earlier dots become folders.
function nativeModulePath(name) {
  const lowerName = name.toLowerCase();
  const lastDot = lowerName.lastIndexOf('.');
  if (lastDot < 0) {
    return `lib${lowerName}.z.so`;
  }
  return `${lowerName.slice(0, lastDot).replace(/\./g, '/')}/lib${lowerName.slice(lastDot + 1)}.z.so`;
}

// Where the platform build installs a shared library, relative to its lib dir.
function installedLibraryPath(target) {
  const outputName = gnStringValue(target.body, 'output_name') ?? target.name;
  const fileName = outputName.startsWith('lib') ? outputName : `lib${outputName}`;
  return `${gnStringValue(target.body, 'relative_install_dir')}/${fileName}.z.so`;
}

const gnFiles = findGnFiles(repoRoot);
const gnTargets = gnFiles.flatMap((file) =>
  parseGnTargets(fs.readFileSync(file, 'utf8')).map((target) => ({ ...target, file })),
);
const bundle = JSON.parse(fs.readFileSync(path.join(repoRoot, 'bundle.json'), 'utf8'));
const component = bundle.component;

describe('GN files', () => {
  // gn is not instrumented: under scripts/with-sanitizer an inherited
  // sanitizer runtime would report gn's own exit-time leaks as failures.
  const gnEnv = { ...process.env };
  delete gnEnv.LD_PRELOAD;
  const gnMissing = spawnSync('gn', ['--version'], { env: gnEnv }).error?.code === 'ENOENT';
  const skipFormat = gnMissing && 'gn is not installed (Debian package generate-ninja; scripts/build installs it)';

  it('are found, and each defines a target', () => {
    assert.ok(gnFiles.length >= 1, 'no GN file found');
    for (const file of gnFiles) {
      assert.ok(
        gnTargets.some((target) => target.file === file),
        `${path.relative(repoRoot, file)} defines no target`,
      );
    }
  });

  for (const file of gnFiles) {
    const relativePath = path.relative(repoRoot, file);
    it(`${relativePath} is gn-formatted`, { skip: skipFormat }, () => {
      const result = spawnSync('gn', ['format', '--dry-run', file], { env: gnEnv, encoding: 'utf8' });
      const output = `${result.stderr}${result.stdout}`.trim();
      assert.equal(
        result.status,
        0,
        `gn format --dry-run exited ${result.status} (${output}); run gn format ${relativePath}`,
      );
    });
  }
});

describe('bundle.json against the GN files', () => {
  const externalDeps = gnTargets.flatMap((target) =>
    gnListValues(target.body, 'external_deps').map((label) => ({ label, target })),
  );
  const where = ({ label, target }) => `${label} in ${target.name} (${path.relative(repoRoot, target.file)})`;

  it('declares every part used in external_deps', () => {
    assert.ok(externalDeps.length > 0, 'no external_deps found');
    const declaredParts = new Set(component.deps.components);
    const undeclared = externalDeps.filter(({ label }) => !declaredParts.has(label.split(':')[0]));
    assert.deepEqual(undeclared.map(where), []);
  });

  it('never names its own part in external_deps', () => {
    const ownPartDeps = externalDeps.filter(({ label }) => label.split(':')[0] === component.name);
    assert.deepEqual(ownPartDeps.map(where), []);
  });

  it('matches the part and subsystem of every target that names them', () => {
    for (const target of gnTargets) {
      for (const [field, expected] of [
        ['part_name', component.name],
        ['subsystem_name', component.subsystem],
      ]) {
        const value = gnStringValue(target.body, field);
        if (value !== undefined) {
          assert.equal(value, expected, `${field} of ${target.name}`);
        }
      }
    }
  });

  it('lists build labels that name existing targets', () => {
    const labels = [...component.build.sub_component, ...(component.build.test || [])];
    assert.ok(component.build.sub_component.length > 0);
    const partPrefix = `//${bundle.segment.destPath}/`;
    for (const label of labels) {
      assert.ok(label.startsWith(partPrefix), `${label} lies outside ${partPrefix}`);
      const [dir, targetName] = label.slice(partPrefix.length).split(':');
      const buildFile = path.join(repoRoot, dir, 'BUILD.gn');
      assert.ok(
        gnTargets.some((target) => target.file === buildFile && target.name === targetName),
        `${label}: no target ${targetName} in ${path.relative(repoRoot, buildFile)}`,
      );
    }
  });
});

describe(`module ${moduleName}`, () => {
  it('is resolved by the loader rule as the platform documents it', () => {
    assert.equal(nativeModulePath('a.bC'), 'a/libbc.z.so');
    assert.equal(nativeModulePath('distributedHardware.deviceManager'), 'distributedhardware/libdevicemanager.z.so');
    assert.equal(nativeModulePath('x.y.Zz'), 'x/y/libzz.z.so');
    assert.equal(nativeModulePath('Single'), 'libsingle.z.so');
  });

  it('is installed by the device build where the loader looks', () => {
    const napiModules = gnTargets.filter(
      (target) =>
        target.template === 'ohos_shared_library' &&
        gnStringValue(target.body, 'relative_install_dir')?.startsWith('module/'),
    );
    assert.deepEqual(napiModules.map(installedLibraryPath), [`module/${nativeModulePath(moduleName)}`]);
  });

  it('is laid out by the host build where the loader looks', (t) => {
    const outputRoot = process.env.OHOS_HOST_ROOT ?? path.join(repoRoot, 'build', 'root');
    if (!fs.existsSync(path.join(outputRoot, 'lib'))) {
      t.skip(`nothing built under ${outputRoot}`);
      return;
    }
    const libraryPath = path.join(outputRoot, 'lib', 'module', nativeModulePath(moduleName));
    assert.ok(fs.existsSync(libraryPath), `${libraryPath} is missing`);
  });
});
