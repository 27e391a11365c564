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
// finds it, '@ohos/hypium' the test framework, and ArkTS sources (.ets, .ts)
// load as the ES modules the platform's compiler makes of them. As on the
// device, relative imports name no extension: from the framework they mean
// .js files, from ArkTS sources .ets or else .ts files.
import fs from 'node:fs';
import { fileURLToPath, pathToFileURL } from 'node:url';
import path from 'node:path';

import { transpileArkts } from './arkts.mjs';

const repoRoot = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const hostIndexUrl = pathToFileURL(path.join(repoRoot, 'host', 'index.js')).href;
const frameworkUrl = pathToFileURL(path.join(repoRoot, 'node_modules', '@ohos', 'hypium')).href + '/';
const NATIVE_SCHEME = 'ohos-native-module:';
const ARKTS_EXTENSIONS = ['.ets', '.ts'];

const isArkts = (url) => url.startsWith('file:') && ARKTS_EXTENSIONS.includes(path.extname(new URL(url).pathname));

// The file a relative import of a device module means ('./List.test' is
// List.test.ets beside an ArkTS source).
function withExtension(specifier, parentURL) {
  if (parentURL.startsWith(frameworkUrl)) {
    return path.extname(specifier) === '' ? `${specifier}.js` : specifier;
  }
  const base = fileURLToPath(new URL(specifier, parentURL));
  const extension = ARKTS_EXTENSIONS.find((candidate) => fs.existsSync(base + candidate));
  return extension === undefined ? specifier : specifier + extension;
}

export async function resolve(specifier, context, nextResolve) {
  if (specifier.startsWith('@ohos.')) {
    return { url: NATIVE_SCHEME + specifier.slice('@ohos.'.length), shortCircuit: true };
  }
  if (specifier === '@ohos/hypium') {
    return { url: `${frameworkUrl}index.js`, shortCircuit: true };
  }
  const relative = specifier.startsWith('./') || specifier.startsWith('../');
  const fromDevice = context.parentURL && (context.parentURL.startsWith(frameworkUrl) || isArkts(context.parentURL));
  if (relative && fromDevice) {
    return nextResolve(withExtension(specifier, context.parentURL), context);
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
  if (isArkts(url)) {
    const file = fileURLToPath(url);
    const source = transpileArkts(fs.readFileSync(file, 'utf8'), path.basename(file));
    return { format: 'module', source, shortCircuit: true };
  }
  if (url.startsWith(frameworkUrl)) {
    return nextLoad(url, { ...context, format: 'module' });
  }
  return nextLoad(url, context);
}
