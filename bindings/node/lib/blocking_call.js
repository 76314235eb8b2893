'use strict';

// Runs one of the calls that block, on a thread of its own, with progress and an AbortSignal.

const { QuastelAbortError, STATUS } = require('./errors');

const DEFAULT_INTERVAL_MS = 100;

function checkOptions({ onProgress, progressInterval, signal }) {
  if (onProgress !== undefined && typeof onProgress !== 'function') {
    throw new TypeError('onProgress has to be a function');
  }
  if (progressInterval !== undefined && !(progressInterval >= 1)) {
    throw new TypeError('progressInterval has to be a number of milliseconds, at least 1');
  }
  if (signal !== undefined && !(signal instanceof AbortSignal)) {
    throw new TypeError('signal has to be an AbortSignal');
  }
  if (signal?.aborted) {
    throw new QuastelAbortError(signal.reason, {});
  }
}

// Calls `begin(callback)`, which starts the call and gives its status to the callback, and resolves
// to {status, aborted}. `poll` gives what onProgress receives; `cancel` asks the call to stop.
// Rejects only after the call has ended, since nobody may destroy the handle before.
function runBlocking({ begin, poll, cancel }, options) {
  const { onProgress, progressInterval = DEFAULT_INTERVAL_MS, signal } = options;
  return new Promise((resolve, reject) => {
    let failure;
    let stopping = false;

    function fail(error) {
      failure ??= error;
      stopping = true;
    }

    function stop() {
      stopping = true;
      try {
        cancel();
      } catch (error) {
        fail(error);
      }
    }

    // A cancel does nothing before the call has begun on its thread: it is repeated until the end.
    const timer = setInterval(() => {
      if (stopping) {
        stop();
        return;
      }
      try {
        onProgress?.(poll());
      } catch (error) {
        fail(error);
        stop();
      }
    }, progressInterval);
    signal?.addEventListener('abort', stop, { once: true });

    function end() {
      clearInterval(timer);
      signal?.removeEventListener('abort', stop);
    }

    try {
      begin((error, status) => {
        end();
        if (error || failure !== undefined) {
          reject(error ?? failure);
        } else {
          resolve({ status, aborted: status === STATUS.CANCELLED && signal?.aborted === true });
        }
      });
    } catch (error) {
      end();
      reject(error);
    }
  });
}

module.exports = { checkOptions, runBlocking };
