'use strict';

// The three scans.

const os = require('node:os');

const { checkOptions, runBlocking } = require('./blocking_call');
const { QuastelAbortError, requireOk } = require('./errors');
const { TextBuffer, count, koffi, native, records } = require('./native');
const { Report, createHandle, destroyHandle, readPerformance, readRows } = require('./report');

const SCAN_KINDS = Object.freeze({ junk: 0, large: 1, duplicate: 2 });

// The library takes a text up to its first NUL: with one inside, it would work on another path than
// the caller wrote.
function checkText(text, what) {
  if (typeof text !== 'string' || text === '' || text.includes('\0')) {
    throw new TypeError(`${what} has to be a text that is not empty and holds no NUL`);
  }
  return text;
}

function requestFor(kind, options) {
  const { protectSystem = true, rulesPath, userHome = os.homedir(),
          systemRoot = `${process.env.SystemDrive ?? 'C:'}\\` } = options;
  const roots = typeof options.roots === 'string' ? [options.roots] : [...(options.roots ?? [])];
  if (kind !== SCAN_KINDS.junk && roots.length === 0) {
    throw new TypeError('roots has to name at least one folder');
  }
  return {
    size: koffi.sizeof(records.request),
    kind,
    roots: kind === SCAN_KINDS.junk ? null : roots.map((root) => checkText(root, 'each root')),
    root_count: kind === SCAN_KINDS.junk ? 0 : roots.length,
    user_home: checkText(userHome, 'userHome'),
    system_root: checkText(systemRoot, 'systemRoot'),
    protect_system: protectSystem ? 1 : 0,
    reserved: 0,
    rules_path: kind === SCAN_KINDS.junk ? checkText(rulesPath, 'rulesPath') : null,
  };
}

function progressReader(handle) {
  const path = new TextBuffer();
  const group = new TextBuffer();
  return () => {
    const status = {};
    requireOk('qs_product_scan_poll', native().qs_product_scan_poll(handle, status));
    return {
      filesVisited: count(status.files_visited),
      bytesVisited: BigInt(status.bytes_visited),
      itemCount: count(status.item_count),
      totalBytes: BigInt(status.total_bytes),
      comparing: status.path_published !== 0,
      currentPath: path.query('qs_product_scan_current_path', handle),
      currentGroup: group.query('qs_product_scan_current_group', handle),
    };
  };
}

async function scan(kindName, options) {
  const kind = SCAN_KINDS[kindName];
  if (options === null || typeof options !== 'object') {
    throw new TypeError('a scan needs its options');
  }
  checkOptions(options);
  const request = requestFor(kind, options);
  const handle = createHandle();
  let report = null;
  try {
    const { status, aborted } = await runBlocking({
      begin: (done) => native().qs_product_scan_start.async(handle, request, done),
      poll: progressReader(handle),
      cancel: () => requireOk('qs_product_scan_cancel', native().qs_product_scan_cancel(handle)),
    }, options);
    if (!aborted) {
      requireOk('qs_product_scan_start', status);
    }
    report = new Report(kindName, handle, await readRows(handle), readPerformance(handle));
    if (aborted) {
      report.close();
      throw new QuastelAbortError(options.signal.reason, { report });
    }
    return report;
  } finally {
    // From the report on, the handle is the report's.
    if (report === null) {
      destroyHandle(handle);
    }
  }
}

const scanJunk = (options) => scan('junk', options);
const scanLarge = (options) => scan('large', options);
const scanDuplicates = (options) => scan('duplicate', options);

module.exports = { scanDuplicates, scanJunk, scanLarge };
