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

// ArkTS sources on the host: the platform's compiler turns an .ets file without UI code into an ES module.
import { createRequire } from 'node:module';

const ts = createRequire(import.meta.url)('ohos-typescript');

const compilerOptions = {
  target: ts.ScriptTarget.ES2021,
  module: ts.ModuleKind.ES2020,
  experimentalDecorators: true,
};

// Rewrites the relative, extensionless module specifiers of imports and exports, as the device's bundler resolves
// them, to name the emitted file: './CarSession' becomes './CarSession.mjs' for extension '.mjs'.
function relativeImportsWith(extension) {
  return (context) => (sourceFile) => {
    const visit = (node) => {
      const isSpecifier =
        ts.isStringLiteral(node) &&
        node.parent !== undefined &&
        (ts.isImportDeclaration(node.parent) || ts.isExportDeclaration(node.parent)) &&
        node.parent.moduleSpecifier === node;
      if (isSpecifier && node.text.startsWith('.')) {
        return ts.factory.createStringLiteral(node.text + extension);
      }
      return ts.visitEachChild(node, visit, context);
    };
    return ts.visitNode(sourceFile, visit);
  };
}

// The JavaScript of the ArkTS file `fileName`; with `extension`, its relative imports name files of that extension.
export function transpileArkts(source, fileName, extension) {
  const transformers = extension === undefined ? {} : { after: [relativeImportsWith(extension)] };
  return ts.transpileModule(source, { compilerOptions, fileName, transformers }).outputText;
}
