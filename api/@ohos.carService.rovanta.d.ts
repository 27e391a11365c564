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

/**
 * @file The script interface of the native module "carService.rovanta": a system application's access to the
 * car-connection service. Where the module departs from the habits of other system modules, the text says so:
 * its callbacks receive one number rather than an (error, data) pair, its errors carry their code as text, too many
 * arguments or a non-function in the callback slot throw code "0" (too few throw "401"), and listener
 * registration reports bad input by returning undefined.
 *
 * @kit CarServiceKit
 */

/**
 * Connects a system application to a car through the car-connection service.
 *
 * @namespace rovanta
 * @syscap SystemCapability.CarService.Rovanta
 * @systemapi
 * @since 12
 */
declare namespace rovanta {
  /**
   * Creates an adapter object and makes it the module's current one: events of the car reach only the listeners
   * registered through the adapter created last. The new adapter is made before the permission checks, so a call
   * that throws 201 or 202 has already replaced the current adapter and dropped every registered listener.
   *
   * @permission ohos.permission.ALLOW_CONNECT_CAR
   * @returns { CarAdapterClient } A new adapter.
   * @throws { AdapterError } 201 - Permission denied.
   * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  function getCarConnectAdapter(): CarAdapterClient;

  /**
   * How the car is discovered. Each read of `DiscoveryMode` yields a new object with these members; there is no
   * member with the value 0.
   *
   * @enum { number }
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  enum DiscoveryMode {
    /**
     * Discovery without the user's involvement.
     *
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    NO_PERCEPTION_DISCOVERY = 1,
    /**
     * Discovery over Bluetooth.
     *
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    BLUETOOTH_DISCOVERY = 2,
    /**
     * Discovery over USB.
     *
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    USB_DISCOVERY = 3,
    /**
     * Discovery by a QR code.
     *
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    QR_DISCOVERY = 4
  }

  /**
   * The error the module throws. Unlike the platform's BusinessError, `code` holds the decimal text of the code:
   * "201", "202", "401" (too few arguments among the parse faults), or "0" for too many arguments or a
   * non-function where the callback belongs.
   *
   * @interface AdapterError
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  interface AdapterError extends Error {
    /**
     * The code as text.
     *
     * @type { string }
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    code: string;
  }

  /**
   * A map of texts handed to the car service. Numbers and booleans arrive as their text (1.5 as "1.500000"),
   * null as "", other values as "".
   *
   * @typedef { Record<string, string | number | boolean | null> } DeviceInfo
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  type DeviceInfo = Record<string, string | number | boolean | null>;

  /**
   * The callback of an operation: called once, on the script thread, with the car service's return code (0 for
   * success). It receives this one argument, never an (error, data) pair: argument errors are thrown at the call.
   *
   * @typedef { function } ResultCallback
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  type ResultCallback = (code: number) => void;

  /**
   * The listener of the car's events. Its functions are called on the script main thread with the adapter object
   * as `this`. Registration checks that the first three are functions; the other four are looked up at each event
   * and may be added or left out at any time.
   *
   * @interface CarConnectListener
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  interface CarConnectListener {
    /**
     * The result of binding to a car.
     *
     * @param { string } deviceId - The car's device id.
     * @param { number } result - The service's result code.
     * @param { number } status - The binding status, as the car service defines it.
     * @param { string } content - Text of the car service, passed on unparsed (often JSON).
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onBindResult(deviceId: string, result: number, status: number, content: string): void;
    /**
     * Data the car sent.
     *
     * @param { number } type - The kind of data.
     * @param { string } data - The data, unparsed.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onDataReceive(type: number, data: string): void;
    /**
     * A change of the connected car's state.
     *
     * @param { number } state - The new state.
     * @param { string } deviceInfo - The car's description, unparsed.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onDeviceStateChange(state: number, deviceInfo: string): void;
    /**
     * A change of the device.
     *
     * @param { number } state - The new state.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onDeviceChange?(state: number): void;
    /**
     * A change of one of the car's services.
     *
     * @param { string } serviceId - The service.
     * @param { number } state - Its new state.
     * @param { number } serviceType - Its type.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onDeviceServiceStateChange?(serviceId: string, state: number, serviceType: number): void;
    /**
     * An event of the surface transfer.
     *
     * @param { number } code - The event's code (not an error code).
     * @param { number } eventId - The event.
     * @param { string } category - Its category.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onSurfaceTransferOnEvent?(code: number, eventId: number, category: string): void;
    /**
     * The result of disconnecting.
     *
     * @param { number } result - The service's result code.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    onDisconnectResult?(result: number): void;
  }

  /**
   * The adapter to the car-connection service, made by getCarConnectAdapter. Every method first checks that the
   * caller is a system application (else it throws 202) holding ohos.permission.ALLOW_CONNECT_CAR (else 201).
   * The nine service operations take a trailing callback, or return a promise when it is left out; the promise
   * resolves with the service's return code, also when that code reports a failure: it is never rejected.
   *
   * @syscap SystemCapability.CarService.Rovanta
   * @systemapi
   * @since 12
   */
  class CarAdapterClient {
    /**
     * Subscribes `listener` under `sessionName` and registers the module with the car service in the background.
     * A name already subscribed keeps its first listener: the call still returns 0 and the new listener is ignored.
     * Unlike other methods, bad input is not thrown: the result is undefined and nothing is subscribed, but the
     * registration with the car service happens all the same.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { string } sessionName - The session's name; cut to 4095 UTF-8 bytes (4094 where a character would split).
     * @param { CarConnectListener } listener - The listener.
     * @returns { number | undefined } 0 once subscribed; undefined for a wrong argument count, a session name that
     *     is not a string, a listener without the three required functions, or an adapter made on another
     *     script thread (a worker) than the one calling.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    registerConnectListener(sessionName: string, listener: CarConnectListener): number | undefined;

    /**
     * Unregisters from the car service and drops the listeners of every session. Arguments are ignored.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @returns { number } 0.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    unregisterConnectListener(): number;

    /**
     * Asks the car service to bind to a car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } mode - How to find the car, such as a DiscoveryMode value.
     * @param { DeviceInfo } deviceInfo - The binding's parameters.
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    bindTarget(mode: number, deviceInfo: DeviceInfo, callback: ResultCallback): void;
    /**
     * Asks the car service to bind to a car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } mode - How to find the car, such as a DiscoveryMode value.
     * @param { DeviceInfo } deviceInfo - The binding's parameters.
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    bindTarget(mode: number, deviceInfo: DeviceInfo): Promise<number>;

    /**
     * Asks the car service to end a binding.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } mode - The binding's mode.
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    unbindTarget(mode: number, callback: ResultCallback): void;
    /**
     * Asks the car service to end a binding.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } mode - The binding's mode.
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    unbindTarget(mode: number): Promise<number>;

    /**
     * Sends control data to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } dataType - The kind of data.
     * @param { string } data - The data; cut to 4095 UTF-8 bytes (4094 where a character would split).
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    sendControlData(dataType: number, data: string, callback: ResultCallback): void;
    /**
     * Sends control data to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } dataType - The kind of data.
     * @param { string } data - The data; cut to 4095 UTF-8 bytes (4094 where a character would split).
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    sendControlData(dataType: number, data: string): Promise<number>;

    /**
     * Starts transferring a display surface to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { DeviceInfo } deviceInfo - The transfer's parameters.
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    startSurfaceTransfer(deviceInfo: DeviceInfo, callback: ResultCallback): void;
    /**
     * Starts transferring a display surface to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { DeviceInfo } deviceInfo - The transfer's parameters.
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    startSurfaceTransfer(deviceInfo: DeviceInfo): Promise<number>;

    /**
     * Stops the surface transfer.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    stopSurfaceTransfer(callback: ResultCallback): void;
    /**
     * Stops the surface transfer.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    stopSurfaceTransfer(): Promise<number>;

    /**
     * Performs a cast operation.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } operation - The operation, as the car service defines it.
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    castOperation(operation: number, callback: ResultCallback): void;
    /**
     * Performs a cast operation.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } operation - The operation, as the car service defines it.
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    castOperation(operation: number): Promise<number>;

    /**
     * Disconnects from the car; the outcome also arrives at onDisconnectResult.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    disconnectDevice(callback: ResultCallback): void;
    /**
     * Disconnects from the car; the outcome also arrives at onDisconnectResult.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    disconnectDevice(): Promise<number>;

    /**
     * Reads a piece of the car's device information. In this form the callback receives a number (0), not the
     * text: use the promise form to read the text.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } type - Which piece, as the car service defines it.
     * @param { ResultCallback } callback - Called with 0.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    getDeviceInfo(type: number, callback: ResultCallback): void;
    /**
     * Reads a piece of the car's device information. A `type` that is not a number is taken as 0 without an
     * error (a WARN line only), so `getDeviceInfo(callback)` is this form and never calls the function; the text
     * arrives whatever code the service returns, ending at its first NUL character.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } [type] - Which piece, as the car service defines it; 0 when left out.
     * @returns { Promise<string> } The device information text.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    getDeviceInfo(type?: number): Promise<string>;

    /**
     * Sends an event to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } eventType - The kind of event, as the car service defines it.
     * @param { string } data - The event's data; cut to 4095 UTF-8 bytes (4094 where a character would split).
     * @param { ResultCallback } callback - Called with the service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    sendEvent(eventType: number, data: string, callback: ResultCallback): void;
    /**
     * Sends an event to the car.
     *
     * @permission ohos.permission.ALLOW_CONNECT_CAR
     * @param { number } eventType - The kind of event, as the car service defines it.
     * @param { string } data - The event's data; cut to 4095 UTF-8 bytes (4094 where a character would split).
     * @returns { Promise<number> } The service's return code.
     * @throws { AdapterError } 201 - Permission denied.
     * @throws { AdapterError } 202 - Permission denied, non-system app called system api.
     * @throws { AdapterError } 401 - Invalid input parameter. (an argument missing or of a wrong type)
     * @throws { AdapterError } 0 - Invalid input parameter. (too many arguments, or no function in the callback slot)
     * @syscap SystemCapability.CarService.Rovanta
     * @systemapi
     * @since 12
     */
    sendEvent(eventType: number, data: string): Promise<number>;
  }
}

export default rovanta;
