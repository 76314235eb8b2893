'use strict';

// Deletes what was picked from a report, and nothing else.

const { checkOptions, runBlocking } = require('./blocking_call');
const { QuastelAbortError, QuastelError, STATUS, requireOk } = require('./errors');
const { count, koffi, native, records } = require('./native');
const { Report } = require('./report');

const MAX_ID = 0xFFFFFFFFFFFFFFFFn;

// Checked one by one: an array of 64-bit numbers would wrap what does not fit, and a wrong id names
// another file.
function checkIds(itemIds) {
  const ids = [...itemIds];
  for (const id of ids) {
    if (typeof id !== 'bigint' || id < 0n || id > MAX_ID) {
      throw new TypeError('itemIds have to be the itemId values of rows, which are bigint');
    }
  }
  return ids;
}

function readDetail(handle) {
  const record = { size: koffi.sizeof(records.cleanDetail) };
  requireOk('qs_product_scan_poll_clean_detailed',
            native().qs_product_scan_poll_clean_detailed(handle, record));
  return {
    requested: count(record.requested),
    processed: count(record.processed),
    deleted: count(record.deleted),
    failed: count(record.failed),
    bytesFreed: BigInt(record.bytes_freed),
  };
}

// A clean that was refused has no result: what the handle still holds is the one before.
const REFUSALS = new Set([STATUS.INVALID_ARGUMENT, STATUS.UNSUPPORTED, STATUS.BUSY]);

async function clean(report, itemIds, options = {}) {
  checkOptions(options);
  const ids = BigUint64Array.from(checkIds(itemIds));
  return Report.withHandle(report, async (handle) => {
    const { status, aborted } = await runBlocking({
      begin: (done) =>
        native().qs_product_scan_start_clean.async(handle, ids, ids.length, done),
      poll: () => readDetail(handle),
      cancel: () => requireOk('qs_product_scan_cancel_clean',
                              native().qs_product_scan_cancel_clean(handle)),
      // The library reads the ids on another thread: they are held until it is done with them.
    }, options).finally(() => Report.refreshDeleted(report, handle, new Set(ids)));
    if (aborted) {
      throw new QuastelAbortError(options.signal.reason, { result: readDetail(handle) });
    }
    if (status !== STATUS.OK) {
      const error = new QuastelError('qs_product_scan_start_clean', status);
      throw REFUSALS.has(status) ? error : Object.assign(error, { result: readDetail(handle) });
    }
    return readDetail(handle);
  });
}

module.exports = { clean };
