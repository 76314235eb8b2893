'use strict';

// What a scan found: plain objects, and the handle that a clean needs.

const { QuastelError, STATUS, requireOk } = require('./errors');
const { TextBuffer, count, koffi, native, records } = require('./native');

const KINDS = ['junk', 'large', 'duplicate', 'group'];
const LARGE_CLASSES = ['archives', 'documents', 'images', 'media', 'other'];
const LARGE_KIND = 1;
const NO_ITEM_ID = 0xFFFFFFFFFFFFFFFFn;
const ROWS_IN_ONE_GO = 500;

// A report that nobody closed and nobody holds any more. A clean holds its report until it ends, so
// that no call is inside the library when this runs.
const forgotten = new FinalizationRegistry((handle) => native().qs_product_scan_destroy(handle));

function createHandle() {
  const out = [null];
  requireOk('qs_product_scan_create', native().qs_product_scan_create(out));
  return out[0];
}

function destroyHandle(handle) {
  requireOk('qs_product_scan_destroy', native().qs_product_scan_destroy(handle));
}

class RowReader {
  constructor(handle) {
    this.handle = handle;
    this.texts = Array.from({ length: 4 }, () => new TextBuffer());
    this.parent = new BigUint64Array(1);
  }

  numbers(index) {
    const row = {};
    const read = () => native().qs_product_scan_report_row(
      this.handle, index,
      ...this.texts.flatMap((text) => [text.units, text.capacity, text.needed]), row);
    let status = read();
    if (status === STATUS.BUFFER_TOO_SMALL) {
      // The texts of a row never change, so the second call has room for them.
      this.texts.forEach((text) => text.grow());
      status = read();
    }
    requireOk('qs_product_scan_report_row', status);
    return row;
  }

  read(index) {
    const row = this.numbers(index);
    const [path, name, title, location] = this.texts.map((text) => text.text());
    requireOk('qs_product_scan_report_row_parent_group_id',
              native().qs_product_scan_report_row_parent_group_id(this.handle, index, this.parent));
    const itemId = BigInt(row.item_id);
    return {
      kind: KINDS[row.kind],
      itemId: itemId === NO_ITEM_ID ? null : itemId,
      groupId: BigInt(row.group_id),
      parentGroupId: this.parent[0],
      path,
      name,
      title,
      location,
      size: BigInt(row.size),
      modified: BigInt(row.modified),
      deletable: row.deletable !== 0,
      preselect: row.preselect !== 0,
      deleted: row.deleted !== 0,
      largeClass: row.kind === LARGE_KIND ? LARGE_CLASSES[row.large_class] : null,
    };
  }
}

async function readRows(handle) {
  const total = new BigUint64Array(1);
  requireOk('qs_product_scan_report_count',
            native().qs_product_scan_report_count(handle, total));
  const reader = new RowReader(handle);
  const rows = [];
  const end = count(total[0]);
  while (rows.length < end) {
    const pause = Math.min(rows.length + ROWS_IN_ONE_GO, end);
    while (rows.length < pause) {
      rows.push(reader.read(rows.length));
    }
    // A report may have a million rows; others want their turn meanwhile.
    await new Promise((resolve) => setImmediate(resolve));
  }
  return rows;
}

function readPerformance(handle) {
  const record = { size: koffi.sizeof(records.performance) };
  requireOk('qs_product_scan_get_performance',
            native().qs_product_scan_get_performance(handle, record));
  return {
    elapsedMicroseconds: BigInt(record.elapsed_us),
    filesVisited: count(record.files_visited),
    bytesVisited: BigInt(record.bytes_visited),
    candidates: count(record.candidates),
    sampledItems: count(record.sampled_items),
    hashedItems: count(record.hashed_items),
    rowCount: count(record.row_count),
    itemCount: count(record.item_count),
  };
}

class Report {
  #handle;
  #inUse = false;

  constructor(kind, handle, rows, performance) {
    this.kind = kind;
    this.rows = rows;
    this.performance = performance;
    this.#handle = handle;
    forgotten.register(this, handle, this);
  }

  get closed() {
    return this.#handle === null;
  }

  close() {
    if (this.#inUse) {
      throw new QuastelError('close', STATUS.BUSY);
    }
    if (this.#handle !== null) {
      destroyHandle(this.#handle);
      this.#handle = null;
      forgotten.unregister(this);
    }
  }

  // For lib/clean.js: keeps the handle alive while `use(handle)` runs, and lets one in at a time.
  static async withHandle(report, use) {
    if (!(report instanceof Report)) {
      throw new TypeError('a report of one of the scans is needed');
    }
    if (report.#handle === null) {
      throw new Error('the report has been closed');
    }
    if (report.#inUse) {
      throw new QuastelError('clean', STATUS.BUSY);
    }
    report.#inUse = true;
    try {
      return await use(report.#handle);
    } finally {
      report.#inUse = false;
    }
  }

  // For lib/clean.js: takes over the marks that a clean has set.
  static refreshDeleted(report, handle, ids) {
    const reader = new RowReader(handle);
    report.rows.forEach((row, index) => {
      if (row.itemId !== null && ids.has(row.itemId)) {
        row.deleted = reader.numbers(index).deleted !== 0;
      }
    });
  }
}

// `using report = await scanLarge(...)`, where the language has it.
if (Symbol.dispose !== undefined) {
  Object.defineProperty(Report.prototype, Symbol.dispose, { value: Report.prototype.close });
}

module.exports = { Report, createHandle, destroyHandle, readPerformance, readRows };
