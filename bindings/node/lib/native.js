'use strict';

// The DLL with the functions that this package uses, as the public header declares them.

const fs = require('node:fs');
const path = require('node:path');
const koffi = require('koffi');

const { STATUS, requireOk } = require('./errors');

// Texts that come back are read from buffers of 16-bit units: no conversion may replace an unpaired
// surrogate, which is allowed in the names of Windows.
const DECLARATIONS = [
  'str qs_version()',
  'uint32_t qs_product_scan_create(_Out_ qs_product_scan **scan_out)',
  'uint32_t qs_product_scan_destroy(qs_product_scan *scan)',
  'uint32_t qs_product_scan_start(qs_product_scan *scan, qs_product_scan_request *request)',
  'uint32_t qs_product_scan_cancel(qs_product_scan *scan)',
  'uint32_t qs_product_scan_poll(qs_product_scan *scan, _Out_ qs_product_scan_status *status)',
  'uint32_t qs_product_scan_current_group(qs_product_scan *scan, uint16_t *out, uint64_t capacity,' +
    ' uint64_t *needed)',
  'uint32_t qs_product_scan_current_path(qs_product_scan *scan, uint16_t *out, uint64_t capacity,' +
    ' uint64_t *needed)',
  'uint32_t qs_product_scan_get_performance(qs_product_scan *scan,' +
    ' _Inout_ qs_product_scan_performance *performance)',
  'uint32_t qs_product_scan_report_count(qs_product_scan *scan, uint64_t *count)',
  'uint32_t qs_product_scan_report_row(qs_product_scan *scan, uint64_t index,' +
    ' uint16_t *path, uint64_t path_capacity, uint64_t *path_needed,' +
    ' uint16_t *name, uint64_t name_capacity, uint64_t *name_needed,' +
    ' uint16_t *title, uint64_t title_capacity, uint64_t *title_needed,' +
    ' uint16_t *location, uint64_t location_capacity, uint64_t *location_needed,' +
    ' _Out_ qs_product_scan_row *row)',
  'uint32_t qs_product_scan_report_row_parent_group_id(qs_product_scan *scan, uint64_t index,' +
    ' uint64_t *parent_group_id)',
  'uint32_t qs_product_scan_start_clean(qs_product_scan *scan, uint64_t *item_ids, uint64_t count)',
  'uint32_t qs_product_scan_poll_clean_detailed(qs_product_scan *scan,' +
    ' _Inout_ qs_product_clean_detail *detail)',
  'uint32_t qs_product_scan_cancel_clean(qs_product_scan *scan)',
];

koffi.opaque('qs_product_scan');

const records = {
  request: koffi.struct('qs_product_scan_request', {
    size: 'uint32_t',
    kind: 'uint32_t',
    roots: 'str16 *',
    root_count: 'uint64_t',
    user_home: 'str16',
    system_root: 'str16',
    protect_system: 'uint32_t',
    reserved: 'uint32_t',
    rules_path: 'str16',
  }),
  row: koffi.struct('qs_product_scan_row', {
    item_id: 'uint64_t',
    group_id: 'uint64_t',
    kind: 'uint32_t',
    reserved: 'uint32_t',
    size: 'int64_t',
    modified: 'uint64_t',
    deletable: 'uint32_t',
    preselect: 'uint32_t',
    deleted: 'uint32_t',
    large_class: 'uint32_t',
  }),
  status: koffi.struct('qs_product_scan_status', {
    state: 'uint32_t',
    path_published: 'uint32_t',
    files_visited: 'uint64_t',
    bytes_visited: 'uint64_t',
    total_bytes: 'uint64_t',
    item_count: 'uint64_t',
    status: 'uint32_t',
    reserved: 'uint32_t',
  }),
  performance: koffi.struct('qs_product_scan_performance', {
    size: 'uint32_t',
    kind: 'uint32_t',
    elapsed_us: 'uint64_t',
    filter_roots_us: 'uint64_t',
    load_rules_us: 'uint64_t',
    walk_us: 'uint64_t',
    group_by_size_us: 'uint64_t',
    sample_us: 'uint64_t',
    sample_keys_us: 'uint64_t',
    plan_hashes_us: 'uint64_t',
    hash_us: 'uint64_t',
    group_by_hash_us: 'uint64_t',
    files_visited: 'uint64_t',
    bytes_visited: 'uint64_t',
    candidates: 'uint64_t',
    sampled_items: 'uint64_t',
    hashed_items: 'uint64_t',
    unhashed_groups: 'uint64_t',
    row_count: 'uint64_t',
    item_count: 'uint64_t',
    status: 'uint32_t',
    reserved: koffi.array('uint32_t', 9),
  }),
  cleanDetail: koffi.struct('qs_product_clean_detail', {
    size: 'uint32_t',
    state: 'uint32_t',
    requested: 'uint64_t',
    processed: 'uint64_t',
    deleted: 'uint64_t',
    failed: 'uint64_t',
    bytes_freed: 'uint64_t',
    status: 'uint32_t',
    reserved: 'uint32_t',
  }),
};

let functions = null;

// Only a full path is loaded: a bare name would be searched in places that others may write to.
function defaultPath() {
  const named = process.env.QUASTEL_CORE_DLL;
  const beside = path.join(__dirname, '..', 'quastel_core.dll');
  const chosen = named ? path.resolve(named) : beside;
  if (!fs.existsSync(chosen)) {
    throw new Error(`${chosen} does not exist: put quastel_core.dll there, name it in the ` +
                    'environment variable QUASTEL_CORE_DLL, or call load(path) first');
  }
  return chosen;
}

function load(file) {
  if (functions !== null) {
    throw new Error('quastel_core.dll has been loaded already');
  }
  const library = koffi.load(file === undefined ? defaultPath() : path.resolve(file));
  functions = {};
  for (const declaration of DECLARATIONS) {
    const name = /\b(qs_\w+)\(/.exec(declaration)[1];
    functions[name] = library.func(declaration);
  }
}

function native() {
  if (functions === null) {
    load();
  }
  return functions;
}

function version() {
  return native().qs_version();
}

// A count as a number. Beyond 2^53 a number is no longer exact, which would be worse than an error.
function count(value) {
  const number = Number(value);
  if (!Number.isSafeInteger(number)) {
    throw new RangeError(`${value} is too large for a count`);
  }
  return number;
}

// Fetches a text that may still grow: asks again until it fits.
class TextBuffer {
  constructor(units = 512) {
    this.units = new Uint16Array(units);
    this.needed = new BigUint64Array(1);
  }

  get capacity() {
    return this.units.length;
  }

  // Makes room for what the last call said that it needs.
  grow() {
    const needed = count(this.needed[0]);
    if (needed > this.units.length) {
      this.units = new Uint16Array(needed);
    }
  }

  text() {
    const length = count(this.needed[0]) - 1;
    return Buffer.from(this.units.buffer, 0, 2 * length).toString('utf16le');
  }

  query(name, scan) {
    for (;;) {
      const status = native()[name](scan, this.units, this.capacity, this.needed);
      if (status !== STATUS.BUFFER_TOO_SMALL) {
        requireOk(name, status);
        return this.text();
      }
      this.grow();
    }
  }
}

module.exports = { TextBuffer, count, koffi, load, native, records, version };
