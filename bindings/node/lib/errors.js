'use strict';

const STATUS_NAMES = [
  'QS_OK',
  'QS_INVALID_ARGUMENT',
  'QS_BUFFER_TOO_SMALL',
  'QS_FAILED',
  'QS_NOT_FOUND',
  'QS_CANCELLED',
  'QS_UNSUPPORTED',
  'QS_BUSY',
];

const STATUS = Object.freeze(
  Object.fromEntries(STATUS_NAMES.map((name, value) => [name.slice('QS_'.length), value])));

// A call of the library that did not answer QS_OK.
class QuastelError extends Error {
  constructor(call, status) {
    const code = STATUS_NAMES[status] ?? `status ${status}`;
    super(`${call} answered ${code}`);
    this.name = 'QuastelError';
    this.code = code;
    this.status = status;
  }
}

// What an AbortSignal leads to. What was found or deleted until then is not lost: it is in `report`
// or `result`.
class QuastelAbortError extends Error {
  constructor(reason, found) {
    super('The operation was aborted', { cause: reason });
    this.name = 'AbortError';
    this.code = 'ABORT_ERR';
    Object.assign(this, found);
  }
}

function requireOk(call, status) {
  if (status !== STATUS.OK) {
    throw new QuastelError(call, status);
  }
}

module.exports = { QuastelAbortError, QuastelError, STATUS, requireOk };
