'use strict';

// The findings of quastel_core.dll as promises. index.d.ts describes all of it.

const { clean } = require('./lib/clean');
const { QuastelAbortError, QuastelError } = require('./lib/errors');
const { load, version } = require('./lib/native');
const { Report } = require('./lib/report');
const { scanDuplicates, scanJunk, scanLarge } = require('./lib/scans');

module.exports = {
  QuastelAbortError,
  QuastelError,
  Report,
  clean,
  load,
  scanDuplicates,
  scanJunk,
  scanLarge,
  version,
};
