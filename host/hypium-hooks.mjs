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


// Module hooks of the host's stand-in of the platform's script test runner: an
// '@ohos.<name>' import yields the native module <name> as the platform loader
// finds it, and the test framework and the suites, written as the device's
// ES modules (relative imports without extensions), load as ES modules.
import { fileURLToPath, pathToFileURL } from 'node:url';
import path from 'node:path';

const repoRoot = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const hostIndexUrl = pathToFileURL(path.join(repoRoot, 'host', 'index.js')).href;
const frameworkUrl = pathToFileURL(path.join(repoRoot, 'node_modules', '@ohos', 'hypium')).href + '/';
const suitesUrl = pathToFileURL(path.join(repoRoot, 'test', 'unittest', 'js')).href + '/';
const NATIVE_SCHEME = 'ohos-native-module:';

const isDeviceModule = (url) => url.startsWith(frameworkUrl) || url.startsWith(suitesUrl);

export async function resolve(specifier, context, nextResolve) {
  if (specifier.startsWith('@ohos.')) {
    return { url: NATIVE_SCHEME + specifier.slice('@ohos.'.length), shortCircuit: true };
  }
  const relative = specifier.startsWith('./') || specifier.startsWith('../');
  if (relative && context.parentURL && isDeviceModule(context.parentURL) && path.extname(specifier) === '') {
    return nextResolve(`${specifier}.js`, context);
  }
  return nextResolve(specifier, context);
}

export async function load(url, context, nextLoad) {
  if (url.startsWith(NATIVE_SCHEME)) {
    const name = url.slice(NATIVE_SCHEME.length);
    const source =
      `import { createRequire } from 'node:module';\n` +
      `const host = createRequire(${JSON.stringify(hostIndexUrl)})('./index.js');\n` +
      `export default host.requireNapi(${JSON.stringify(name)});\n`;
    return { format: 'module', source, shortCircuit: true };
  }
  if (isDeviceModule(url)) {
    return nextLoad(url, { ...context, format: 'module' });
  }
  return nextLoad(url, context);
}
