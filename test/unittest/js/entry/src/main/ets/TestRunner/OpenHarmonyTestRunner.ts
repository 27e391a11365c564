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

// The test runner that "aa test ... -s unittest /ets/TestRunner/OpenHarmonyTestRunner" names: it starts the test
// ability of the bundle under test, whose onCreate runs the suites.
import TestRunner from '@ohos.application.testRunner';
import AbilityDelegatorRegistry from '@ohos.app.ability.abilityDelegatorRegistry';

const TEST_ABILITY = 'TestAbility';

export default class OpenHarmonyTestRunner implements TestRunner {
  onPrepare(): void {
    console.info('OpenHarmonyTestRunner onPrepare');
  }

  async onRun(): Promise<void> {
    const abilityDelegator = AbilityDelegatorRegistry.getAbilityDelegator();
    const bundleName = AbilityDelegatorRegistry.getArguments().bundleName;
    const command = `aa start -d 0 -a ${TEST_ABILITY} -b ${bundleName}`;
    const result = await abilityDelegator.executeShellCommand(command);
    console.info(`OpenHarmonyTestRunner ${command}: exit code ${result.exitCode}`);
  }
}
