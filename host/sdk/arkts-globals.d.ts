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

// What the SDK declares globally for ArkTS code that this project's .ets files use: the console, the timers and
// the few UI components, decorators and attribute classes of a test package's page. The ArkTS linter reads these in place
// of the SDK.
declare class console {
  static debug(message: string, ...args: string[]): void;
  static log(message: string, ...args: string[]): void;
  static info(message: string, ...args: string[]): void;
  static warn(message: string, ...args: string[]): void;
  static error(message: string, ...args: string[]): void;
}

declare function setTimeout(handler: () => void, delay?: number): number;
declare function clearTimeout(timeoutId?: number): void;

declare const Entry: ClassDecorator;
declare const Component: ClassDecorator;

declare class CustomComponent {
  build(): void;
}

declare class ColumnAttribute {
  width(value: string): ColumnAttribute;
  height(value: string): ColumnAttribute;
}

declare class TextAttribute {
  fontSize(value: number): TextAttribute;
}

declare function Column(): ColumnAttribute;
declare function Text(content: string): TextAttribute;
