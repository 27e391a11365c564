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


// Checks on the device build description: gn evaluates the part's build files
// in the stand-in platform tree (host/gn), which refuses what the platform's
// build refuses; gn desc then says where the module is installed and what it
// is built from.
'use strict';

const { describe, it, before, after } = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { spawnSync } = require('node:child_process');

const repoRoot = path.resolve(__dirname, '..');
const moduleName = 'carService.rovanta';
const bundle = JSON.parse(fs.readFileSync(path.join(repoRoot, 'bundle.json'), 'utf8'));
const partLabel = `//${bundle.segment.destPath}`;
const moduleDir = 'interfaces/kits/napi/vexar';
const moduleLabel = `${partLabel}/${moduleDir}:rovanta`;

// gn is not instrumented: under scripts/with-sanitizer an inherited
// sanitizer runtime would report gn's own exit-time leaks as failures.
const toolEnv = { ...process.env };
delete toolEnv.LD_PRELOAD;

function run(command, args, options = {}) {
  return spawnSync(command, args, { env: toolEnv, encoding: 'utf8', ...options });
}

// Lays out a platform tree around partDir in workDir and runs gn gen there;
// returns gn's exit status and output.
function gnGen(workDir, partDir = repoRoot) {
  const result = run(path.join(repoRoot, 'scripts/build-gn'), ['--gen-only', workDir], {
    env: { ...toolEnv, ROVANTA_PART_DIR: partDir },
  });
  return { status: result.status, output: `${result.stdout}${result.stderr}` };
}

function gnDesc(workDir, label) {
  const result = run('gn', ['desc', `--root=${workDir}`, path.join(workDir, 'out'), label, '--format=json']);
  assert.equal(result.status, 0, `gn desc ${label}: ${result.stderr}${result.stdout}`);
  return JSON.parse(result.stdout);
}

function findGnFiles(dir) {
  return fs.readdirSync(dir, { withFileTypes: true }).flatMap((entry) => {
    const entryPath = path.join(dir, entry.name);
    if (entry.isDirectory()) {
      const skipped = ['.git', 'build', 'node_modules'].map((name) => path.join(repoRoot, name)).includes(entryPath);
      return skipped ? [] : findGnFiles(entryPath);
    }
    return /\.gni?$/.test(entry.name) ? [entryPath] : [];
  });
}

// Where the platform loader looks for carService.rovanta in its module directory: the name lower-cased, earlier
// dot-separated parts as folders, the last one as lib<part>.z.so.
const modulePath = 'carservice/librovanta.z.so';

const scratchDirs = [];
function scratchDir(prefix) {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), prefix));
  scratchDirs.push(dir);
  return dir;
}
after(() => scratchDirs.forEach((dir) => fs.rmSync(dir, { recursive: true, force: true })));

// A copy of the part's build files and device tests; sources are not needed to generate.
function partCopy() {
  const partDir = scratchDir('rovanta-part-');
  fs.copyFileSync(path.join(repoRoot, 'bundle.json'), path.join(partDir, 'bundle.json'));
  fs.mkdirSync(path.join(partDir, moduleDir), { recursive: true });
  fs.copyFileSync(path.join(repoRoot, moduleDir, 'BUILD.gn'), path.join(partDir, moduleDir, 'BUILD.gn'));
  for (const label of bundle.component.build.test) {
    const testDir = label.slice(partLabel.length + 1).split(':')[0];
    fs.cpSync(path.join(repoRoot, testDir), path.join(partDir, testDir), { recursive: true });
  }
  return partDir;
}

describe('GN files', () => {
  for (const file of findGnFiles(repoRoot)) {
    const relativePath = path.relative(repoRoot, file);
    it(`${relativePath} is gn-formatted`, () => {
      const result = run('gn', ['format', '--dry-run', file]);
      assert.equal(result.status, 0, `gn format --dry-run: ${result.stderr}${result.stdout}; run gn format ${relativePath}`);
    });
  }
});

describe('the part in a platform tree', () => {
  let workDir;
  let moduleTarget;
  before(() => {
    workDir = scratchDir('rovanta-gn-');
    const gen = gnGen(workDir);
    assert.equal(gen.status, 0, `gn gen and gn check failed:\n${gen.output}`);
    moduleTarget = gnDesc(workDir, moduleLabel)[moduleLabel];
  });

  it(`installs ${moduleName} where the loader looks`, () => {
    assert.equal(moduleTarget.type, 'shared_library');
    assert.deepEqual(moduleTarget.outputs, [`//out/root/lib/module/${modulePath}`]);
  });

  it('builds the module from every source of the module', () => {
    // A source left out still links (the engine's symbols stay undefined), and
    // fails only when the device loads the module.
    const sourceDir = path.join(repoRoot, moduleDir, 'src');
    const expected = fs
      .readdirSync(sourceDir)
      .filter((name) => name.endsWith('.cpp'))
      .map((name) => `${partLabel}/${moduleDir}/src/${name}`);
    assert.deepEqual([...moduleTarget.sources].sort(), expected.sort());
  });

  it('keeps the platform defaults except where the module opts out', () => {
    assert.ok(moduleTarget.cflags_cc.includes('-fexceptions'), 'use_exceptions did not reach the compiler');
    assert.ok(moduleTarget.cflags_cc.includes('-fno-rtti'), 'RTTI is on');
  });

  it('links the module with the version script of module libraries, and the library exports only what it keeps', (t) => {
    assert.ok(
      moduleTarget.ldflags.some((flag) => flag.endsWith('/build/templates/cxx/napi.versionscript')),
      `no napi version script among ${moduleTarget.ldflags}`,
    );
    const library = path.join(repoRoot, 'build/gn/root/lib/module', modulePath);
    if (!fs.existsSync(library)) {
      t.skip('the module has not been built with GN (npm run build:gn)');
      return;
    }
    // What the platform's version script for module libraries keeps global; all else is local.
    const kept = [/^_init$/, /^_fini$/, /^NAPI_.*_GetABCCode$/, /^NAPI_.*_GetJSCode$/, /delegator_E$/, /instance_E$/,
      /mutex_E$/, /_NewInstance$/, /_GetNativeObject$/];
    const nm = run('nm', ['-D', '--defined-only', library]);
    assert.equal(nm.status, 0, nm.stderr);
    const exported = nm.stdout.split('\n').filter(Boolean).map((line) => line.split(' ').pop());
    assert.deepEqual(exported.filter((symbol) => !kept.some((pattern) => pattern.test(symbol))), []);
  });

  it('builds the device test targets that bundle.json lists', () => {
    assert.ok(bundle.component.build.test?.length > 0, 'bundle.json lists no build.test');
    for (const label of bundle.component.build.test) {
      const group = gnDesc(workDir, label)[label];
      assert.equal(group.testonly, true, `${label} is not testonly`);
      assert.ok(group.deps.length > 0, `${label} has no tests`);
    }
  });
});

describe('the stand-in platform build refuses what the platform refuses', () => {
  const buildFile = path.join(moduleDir, 'BUILD.gn');
  const original = fs.readFileSync(path.join(repoRoot, buildFile), 'utf8');
  const relativeInstallDir = 'relative_install_dir = "module/carservice"';
  const externalDeps = 'external_deps = [';
  const cases = [
    ['a misspelt field', relativeInstallDir, 'relative_install_dirs = "module/carservice"', 'Assignment had no effect'],
    ['output_dir', relativeInstallDir, `${relativeInstallDir}\n  output_dir = "x"`, 'output_dir is not allowed'],
    ['an unknown sanitize field', 'cfi = true', 'cfi = true\n    cfi_typo = true', 'sanitize holds a field'],
    ['a part bundle.json does not declare', externalDeps, `${externalDeps} "samgr:samgr_proxy",`, 'not in deps.components'],
    ['its own part in external_deps', externalDeps, `${externalDeps} "rovanta:other",`, "names the target's own part"],
    ['another subsystem', 'subsystem_name = "carservice"', 'subsystem_name = "other"', 'is not "carservice"'],
  ];

  // A copy of the part whose BUILD.gn has one change.
  function partWith(search, replacement) {
    assert.ok(original.includes(search), `${buildFile} no longer holds ${search}`);
    const partDir = partCopy();
    fs.writeFileSync(path.join(partDir, buildFile), original.replace(search, replacement));
    return partDir;
  }

  for (const [fault, search, replacement, message] of cases) {
    it(`refuses ${fault}`, () => {
      const gen = gnGen(scratchDir('rovanta-gn-'), partWith(search, replacement));
      assert.notEqual(gen.status, 0, `gn gen accepted ${fault}`);
      assert.match(gen.output, new RegExp(message.replace(/[.*+?^${}()|[\]\\]/g, '\\$&')));
    });
  }
});

describe('the stand-in platform build refuses a stage test package the platform cannot build', () => {
  const stageDir = path.join('test', 'unittest', 'js');
  const stageBuildFile = path.join(stageDir, 'BUILD.gn');
  const withoutLine = (line) => (partDir) => {
    const file = path.join(partDir, stageBuildFile);
    const text = fs.readFileSync(file, 'utf8');
    assert.ok(text.includes(line), `${stageBuildFile} no longer holds ${line}`);
    fs.writeFileSync(file, text.replace(line, ''));
  };
  const withoutFile = (file) => (partDir) => fs.rmSync(path.join(partDir, stageDir, file), { recursive: true });
  const cases = [
    ['without hap_name', withoutLine('  hap_name = "RovantaJsTest"\n'), 'hap_name is required'],
    ['without its test runner', withoutFile('entry/src/main/ets/TestRunner/OpenHarmonyTestRunner.ts'), 'OpenHarmonyTestRunner.ts'],
    ['without its app scope resources', withoutFile('AppScope/resources'), 'no such folder'],
  ];
  for (const [fault, change, message] of cases) {
    it(`refuses the package ${fault}`, () => {
      const partDir = partCopy();
      change(partDir);
      const gen = gnGen(scratchDir('rovanta-gn-'), partDir);
      assert.notEqual(gen.status, 0, `gn gen accepted the package ${fault}`);
      assert.ok(gen.output.includes(message), gen.output);
    });
  }
});

it('package.json and bundle.json carry one version, which the changelog names', () => {
  const packageVersion = JSON.parse(fs.readFileSync(path.join(repoRoot, 'package.json'), 'utf8')).version;
  assert.equal(bundle.version, packageVersion, 'bundle.json and package.json disagree');
  const changelog = fs.readFileSync(path.join(repoRoot, 'CHANGELOG.md'), 'utf8');
  const released = [...changelog.matchAll(/^## \[(\d+\.\d+\.\d+)\]/gm)].map((match) => match[1]);
  assert.equal(released[0], packageVersion, 'the newest release in CHANGELOG.md is not the version');
});

it(`module ${moduleName} is laid out by the host build where the loader looks`, (t) => {
  const outputRoot = process.env.OHOS_HOST_ROOT ?? path.join(repoRoot, 'build', 'root');
  if (!fs.existsSync(path.join(outputRoot, 'lib'))) {
    t.skip(`nothing built under ${outputRoot}`);
    return;
  }
  const libraryPath = path.join(outputRoot, 'lib', 'module', modulePath);
  assert.ok(fs.existsSync(libraryPath), `${libraryPath} is missing`);
});
