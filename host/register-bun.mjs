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

// The platform's import on Bun: `bun --preload <repo>/host/register-bun.mjs app.mjs` makes
// `import x from '@ohos.<name>'` yield globalThis.requireNapi('<name>'), through a runtime plugin.
import { plugin } from 'bun';

import './platform-import.mjs';

plugin({
  name: 'platform import',
  setup(build) {
    build.onResolve({ filter: /^@ohos\./ }, (args) => ({ path: args.path.slice('@ohos.'.length), namespace: 'ohos-napi' }));
    build.onLoad({ filter: /.*/, namespace: 'ohos-napi' }, (args) => ({
      exports: { default: globalThis.requireNapi(args.path) },
      loader: 'object',
    }));
  },
});
