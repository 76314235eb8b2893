'use strict';

// Runs on Windows, or under Wine, on real files below the folder that QUASTEL_TEST_FOLDER names.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');

const quastel = require('..');
const { koffi, records } = require('../lib/native');
const { STATUS } = require('../lib/errors');

const LARGE = 10485761;
const folder = process.env.QUASTEL_TEST_FOLDER;
assert.ok(folder && path.isAbsolute(folder), 'QUASTEL_TEST_FOLDER has to name a folder');

let number = 0;

// A fresh folder with files: name -> content, or a size for a file without blocks.
function tree(files) {
  const root = path.join(folder, `tree${++number}`);
  fs.mkdirSync(root);
  for (const [name, content] of Object.entries(files)) {
    const file = path.join(root, name);
    fs.mkdirSync(path.dirname(file), { recursive: true });
    fs.writeFileSync(file, typeof content === 'number' ? '' : content);
    if (typeof content === 'number') {
      fs.truncateSync(file, content);
    }
  }
  return root;
}

function home() {
  return tree({});
}

// The environment of the process, as the library sees it, for the time of one test.
function holdScans(t, milliseconds) {
  process.env.QUASTEL_SCAN_HOLD_MS = String(milliseconds);
  t.after(() => delete process.env.QUASTEL_SCAN_HOLD_MS);
}

const names = (rows) => rows.map((row) => row.name).sort();

function writeRules(root, categories) {
  const rules = path.join(root, 'rules.xml');
  const body = `<Root>${categories}</Root>`;
  fs.writeFileSync(rules, Buffer.concat([Buffer.from([0xFF, 0xFE]), Buffer.from(body, 'utf16le')]));
  return rules;
}

const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

test('the version is that of the library', () => {
  assert.equal(quastel.version(), require('../package.json').version);
  assert.throws(() => quastel.load(), /loaded already/);
});

test('what the types declare is what the package exports', () => {
  const types = fs.readFileSync(path.join(__dirname, '..', 'index.d.ts'), 'utf8');
  const declared = [...types.matchAll(/^export (?:function|class) (\w+)/gm)].map((m) => m[1]);
  assert.deepEqual(declared.sort(), Object.keys(quastel).sort());
});

test('records lie in memory as the header says', () => {
  const interfaceFile = process.env.QUASTEL_INTERFACE;
  assert.ok(interfaceFile, 'QUASTEL_INTERFACE has to name tests/abi/interface.txt');
  const text = fs.readFileSync(interfaceFile, 'utf8');
  let fields = 0;
  for (const type of Object.values(records)) {
    const block = new RegExp(`^record ${type.name} of (\\d+) bytes.*\n((?:  .*\n)+)`, 'm').exec(text);
    assert.ok(block, type.name);
    assert.equal(koffi.sizeof(type), Number(block[1]), type.name);
    const wanted = [...block[2].matchAll(/^  at (\d+): .*?(\w+)(?:\[\d+\])? of \d+ bytes$/gm)];
    assert.equal(wanted.length, Object.keys(type.members).length, type.name);
    for (const [, offset, field] of wanted) {
      assert.equal(koffi.offsetof(type, field), Number(offset), `${type.name}.${field}`);
      ++fields;
    }
  }
  assert.equal(fields, 58);
});

test('large files are found, with exact numbers', async () => {
  const root = tree({ 'film.mkv': LARGE + 4, 'sub/data.zip': LARGE, 'ten.bin': LARGE - 1, 'a.txt': 'a' });
  const report = await quastel.scanLarge({ roots: root });
  try {
    assert.equal(report.kind, 'large');
    assert.deepEqual(names(report.rows), ['data.zip', 'film.mkv']);
    const film = report.rows.find((row) => row.name === 'film.mkv');
    assert.equal(film.kind, 'large');
    assert.equal(film.path, path.join(root, 'film.mkv'));
    assert.equal(film.location, root);
    assert.equal(film.title, 'Media files');
    assert.equal(film.largeClass, 'media');
    assert.equal(film.size, BigInt(LARGE + 4));
    assert.equal(film.groupId, 4n);
    assert.equal(film.parentGroupId, 0n);
    assert.ok(film.modified > 630000000000000000n);
    assert.equal(film.deletable, true);
    assert.equal(film.preselect, false);
    assert.equal(film.deleted, false);
    assert.deepEqual(report.rows.map((row) => row.itemId), [0n, 1n]);
    assert.equal(report.performance.filesVisited, 4);
    assert.equal(report.performance.itemCount, 2);
    assert.equal(report.performance.bytesVisited, BigInt(3 * LARGE + 4));
  } finally {
    report.close();
  }
  assert.equal(report.closed, true);
  assert.equal(report.rows.length, 2);
  report.close();
});

test('a size beyond 2^53 stays exact', () => {
  // What no file system here holds: the conversion by itself.
  const bytes = Buffer.alloc(koffi.sizeof(records.row));
  bytes.writeBigUInt64LE(0xFFFFFFFFFFFFFFFEn, koffi.offsetof(records.row, 'item_id'));
  bytes.writeBigInt64LE(9007199254740993n, koffi.offsetof(records.row, 'size'));
  const row = koffi.decode(bytes, records.row);
  assert.equal(BigInt(row.item_id), 0xFFFFFFFFFFFFFFFEn);
  assert.equal(BigInt(row.size), 9007199254740993n);
  assert.throws(() => require('../lib/native').count(9007199254740993n), RangeError);
});

test('names in any alphabet come back as they are', async () => {
  const name = '\u00dcn\u00ef \u6570\u636e \u{1f3b5}.iso';
  const root = tree({ [name]: LARGE });
  const report = await quastel.scanLarge({ roots: [root] });
  assert.deepEqual(names(report.rows), [name]);
  report.close();
});

test('long texts are fetched whole', async () => {
  const root = tree({});
  const deep = path.join(root, ...Array(8).fill('a folder whose name is rather long, as some are'));
  fs.mkdirSync(`\\\\?\\${deep}`, { recursive: true });
  fs.writeFileSync(`\\\\?\\${deep}\\deep.tmp`, 'x');
  const title = 'a title '.repeat(200);
  const rules = writeRules(root, `<Category DisplayName="${title}">` +
    `<Folder Path="${root}" Pattern="deep.tmp"/></Category>`);
  const report = await quastel.scanJunk({ rulesPath: rules, userHome: home() });
  assert.equal(report.rows[0].title, title);
  assert.equal(report.rows[2].path.length, deep.length + '\\\\?\\'.length + '\\deep.tmp'.length);
  report.close();
});

test('unpaired surrogates survive in both directions', async () => {
  const title = 'high \ud83d low \udc00 end';
  const root = tree({ 'junk/one.tmp': 'x' });
  const rules = writeRules(root, `<Category DisplayName="${title}">` +
    `<Folder Path="{UserHome}\\junk" DisplayName="${title}"/></Category>`);
  const report = await quastel.scanJunk({ rulesPath: rules, userHome: root });
  assert.deepEqual(report.rows.map((row) => row.title), [title, title, title]);
  report.close();

  const library = koffi.load(process.env.QUASTEL_CORE_DLL);
  const combine = library.func('uint32_t qs_path_combine(str16 base, str16 relative, uint16_t *out,' +
                               ' uint64_t capacity, uint64_t *needed)');
  const units = new Uint16Array(16);
  const needed = new BigUint64Array(1);
  assert.equal(combine('C:\\\ud83d', '\udc00', units, units.length, needed), STATUS.OK);
  assert.deepEqual([...units.subarray(0, Number(needed[0]))],
                   [0x43, 0x3A, 0x5C, 0xD83D, 0x5C, 0xDC00, 0]);
});

test('duplicates are found', async () => {
  const content = Buffer.alloc(20000, 'abcdefg');
  const root = tree({ 'one.bin': content, 'two.bin': content, 'other.bin': Buffer.alloc(20000, 'x') });
  const profile = home();
  const report = await quastel.scanDuplicates({ roots: [root], userHome: profile });
  assert.deepEqual(names(report.rows), ['one.bin', 'two.bin']);
  assert.ok(report.rows.every((row) => row.kind === 'duplicate' && row.groupId === 1n));
  assert.equal(report.performance.candidates, 3);
  assert.ok(fs.existsSync(path.join(profile, 'AppData', 'Local')), 'the cache lies in the profile');
  report.close();
});

test('junk is found, with its groups', async () => {
  const root = tree({ 'junk/one.tmp': '1', 'junk/deep/two.tmp': '22' });
  const rules = writeRules(root, '<Category DisplayName="Some junk">' +
    '<Folder Path="{UserHome}\\junk" DisplayName="A folder"/></Category>');
  const report = await quastel.scanJunk({ rulesPath: rules, userHome: root });
  assert.deepEqual(report.rows.map((row) => [row.kind, row.title, row.itemId]), [
    ['group', 'Some junk', null],
    ['group', 'A folder', null],
    ['junk', 'A folder', 0n],
    ['junk', 'A folder', 1n],
  ]);
  assert.equal(report.rows[0].groupId, 1n);
  assert.ok(report.rows[1].groupId >= 1n << 60n);
  assert.equal(report.rows[2].parentGroupId, 1n);
  assert.equal(report.rows[2].preselect, true);
  assert.equal(report.rows[2].largeClass, null);
  report.close();
});

test('the protected folders are left out unless they are asked for', async () => {
  const root = tree({ 'AppData/kept.iso': LARGE, 'found.iso': LARGE });
  const guarded = await quastel.scanLarge({ roots: root, userHome: root });
  assert.deepEqual(names(guarded.rows), ['found.iso']);
  guarded.close();
  const open = await quastel.scanLarge({ roots: root, userHome: root, protectSystem: false });
  assert.deepEqual(names(open.rows), ['found.iso', 'kept.iso']);
  open.close();
});

test('progress arrives while a scan runs', async (t) => {
  holdScans(t, 1000);
  const root = tree({ 'film.mkv': LARGE });
  const seen = [];
  const report = await quastel.scanLarge({
    roots: root, progressInterval: 20, onProgress: (progress) => seen.push(progress) });
  assert.ok(seen.length >= 3, `${seen.length} times`);
  assert.deepEqual(seen[0], { filesVisited: 0, bytesVisited: 0n, itemCount: 0, totalBytes: 0n,
                              comparing: false, currentPath: '', currentGroup: '' });
  const quiet = seen.length;
  await pause(60);
  assert.equal(seen.length, quiet, 'no progress after the end');
  report.close();
});

test('an abort ends a scan and gives what was found', async (t) => {
  holdScans(t, 5000);
  const root = tree({ 'film.mkv': LARGE });
  const controller = new AbortController();
  const started = Date.now();
  setTimeout(() => controller.abort(new Error('enough')), 50);
  await assert.rejects(quastel.scanLarge({ roots: root, signal: controller.signal }), (error) => {
    assert.ok(error instanceof quastel.QuastelAbortError);
    assert.equal(error.name, 'AbortError');
    assert.equal(error.code, 'ABORT_ERR');
    assert.equal(error.cause.message, 'enough');
    assert.deepEqual(error.report.rows, []);
    assert.equal(error.report.closed, true);
    return true;
  });
  assert.ok(Date.now() - started < 3000, 'the hold was not waited for');
});

test('an abort right after the start is not lost', async (t) => {
  holdScans(t, 5000);
  const root = tree({});
  const controller = new AbortController();
  const started = Date.now();
  const scans = Array.from({ length: 6 }, () =>
    quastel.scanLarge({ roots: root, signal: controller.signal, progressInterval: 10 }));
  controller.abort();
  for (const outcome of await Promise.allSettled(scans)) {
    assert.equal(outcome.status, 'rejected');
    assert.equal(outcome.reason.name, 'AbortError');
  }
  assert.ok(Date.now() - started < 3000, 'the hold was not waited for');
});

test('an aborted signal lets nothing begin', async () => {
  const root = tree({ 'film.mkv': LARGE });
  await assert.rejects(quastel.scanLarge({ roots: root, signal: AbortSignal.abort() }), (error) => {
    assert.equal(error.name, 'AbortError');
    assert.equal(error.report, undefined);
    return true;
  });
  const report = await quastel.scanLarge({ roots: root });
  await assert.rejects(quastel.clean(report, [0n], { signal: AbortSignal.abort() }),
                       { name: 'AbortError' });
  assert.equal(fs.existsSync(path.join(root, 'film.mkv')), true);
  report.close();
});

test('an error of onProgress ends the scan and comes back', async (t) => {
  holdScans(t, 5000);
  const root = tree({});
  const started = Date.now();
  await assert.rejects(quastel.scanLarge({ roots: root, progressInterval: 20, onProgress: () => {
    throw new Error('mine');
  } }), /mine/);
  assert.ok(Date.now() - started < 3000, 'the hold was not waited for');
});

test('two scans at once do not disturb each other', async () => {
  const [one, two] = [tree({ 'one.iso': LARGE }), tree({ 'two.iso': LARGE })];
  const reports = await Promise.all([one, two].map((roots) => quastel.scanLarge({ roots })));
  assert.deepEqual(reports.map((report) => names(report.rows)), [['one.iso'], ['two.iso']]);
  reports.forEach((report) => report.close());
});

test('a clean deletes what was picked and nothing else', async () => {
  const root = tree({ 'a.iso': LARGE, 'b.iso': LARGE + 1, 'c.iso': LARGE + 2 });
  const report = await quastel.scanLarge({ roots: root });
  const picked = report.rows.find((row) => row.name === 'b.iso');
  assert.deepEqual(await quastel.clean(report, [picked.itemId]), {
    requested: 1, processed: 1, deleted: 1, failed: 0, bytesFreed: BigInt(LARGE + 1) });
  assert.deepEqual(fs.readdirSync(root).sort(), ['a.iso', 'c.iso']);
  assert.deepEqual(report.rows.filter((row) => row.deleted), [picked]);
  // The report goes on: the others can be cleaned later, and the same one cannot.
  await assert.rejects(quastel.clean(report, [picked.itemId]), { code: 'QS_INVALID_ARGUMENT' });
  assert.equal((await quastel.clean(report, [])).requested, 0);
  report.close();
  await assert.rejects(quastel.clean(report, [0n]), /closed/);
  assert.deepEqual(fs.readdirSync(root).sort(), ['a.iso', 'c.iso']);
});

test('a file that changed since the scan stays', async () => {
  const root = tree({ 'a.iso': LARGE, 'b.iso': LARGE });
  const report = await quastel.scanLarge({ roots: root });
  fs.truncateSync(path.join(root, 'a.iso'), LARGE + 1);
  const changed = report.rows.find((row) => row.name === 'a.iso');
  await assert.rejects(quastel.clean(report, [changed.itemId]), (error) => {
    assert.equal(error.code, 'QS_FAILED');
    assert.deepEqual(error.result, {
      requested: 1, processed: 1, deleted: 0, failed: 1, bytesFreed: 0n });
    return true;
  });
  const both = await quastel.clean(report, report.rows.map((row) => row.itemId));
  assert.deepEqual([both.deleted, both.failed], [1, 1]);
  assert.deepEqual(fs.readdirSync(root), ['a.iso']);
  report.close();
});

test('the last copy of a set cannot be deleted', async () => {
  const root = tree({ 'one.txt': 'the same', 'two.txt': 'the same' });
  const report = await quastel.scanDuplicates({ roots: root, userHome: home() });
  const ids = report.rows.map((row) => row.itemId);
  assert.equal(ids.length, 2);
  await assert.rejects(quastel.clean(report, ids), (error) => {
    assert.equal(error.code, 'QS_INVALID_ARGUMENT');
    assert.equal(error.result, undefined);
    return true;
  });
  assert.deepEqual(fs.readdirSync(root).sort(), ['one.txt', 'two.txt']);
  await quastel.clean(report, [ids[1]]);
  assert.equal(fs.readdirSync(root).length, 1);
  report.close();
});

test('ids that are no ids are refused before the library is asked', async () => {
  const root = tree({ 'a.iso': LARGE });
  const report = await quastel.scanLarge({ roots: root });
  for (const ids of [[0], [-1n], [1n << 64n], ['0'], [null]]) {
    await assert.rejects(quastel.clean(report, ids), TypeError);
  }
  for (const ids of [[1n], [0n, 0n], [0xFFFFFFFFFFFFFFFFn]]) {
    await assert.rejects(quastel.clean(report, ids), { code: 'QS_INVALID_ARGUMENT' });
  }
  await assert.rejects(quastel.clean({ rows: [] }, [0n]), TypeError);
  assert.deepEqual(fs.readdirSync(root), ['a.iso']);
  report.close();
});

test('a clean can be aborted between two files', async () => {
  const files = Object.fromEntries(Array.from({ length: 1500 }, (_, i) => [`junk/${i}.tmp`, 'x']));
  const root = tree(files);
  const rules = writeRules(root, '<Category DisplayName="Junk">' +
    '<Folder Path="{UserHome}\\junk"/></Category>');
  const report = await quastel.scanJunk({ rulesPath: rules, userHome: root });
  const ids = report.rows.map((row) => row.itemId).filter((id) => id !== null);
  assert.equal(ids.length, 1500);
  const controller = new AbortController();
  let done;
  await assert.rejects(quastel.clean(report, ids, {
    signal: controller.signal,
    progressInterval: 1,
    onProgress: (progress) => {
      assert.equal(progress.processed, progress.deleted + progress.failed);
      if (progress.processed > 0) {
        controller.abort();
      }
    },
  }), (error) => {
    assert.equal(error.name, 'AbortError');
    done = error.result;
    return true;
  });
  assert.ok(done.deleted > 0 && done.deleted < 1500, `${done.deleted} deleted`);
  assert.equal(done.failed, 0);
  assert.equal(fs.readdirSync(path.join(root, 'junk')).length, 1500 - done.deleted);
  assert.equal(report.rows.filter((row) => row.deleted).length, done.deleted);
  report.close();
});

test('a report in use can neither be closed nor cleaned twice', async () => {
  const root = tree({ 'a.iso': LARGE, 'b.iso': LARGE });
  const report = await quastel.scanLarge({ roots: root });
  const running = quastel.clean(report, [0n]);
  assert.throws(() => report.close(), { code: 'QS_BUSY' });
  await assert.rejects(quastel.clean(report, [1n]), { code: 'QS_BUSY' });
  assert.equal((await running).deleted, 1);
  assert.equal(fs.readdirSync(root).length, 1);
  report.close();
});

test('failures of a scan have the name of their status', async () => {
  const root = tree({ 'bad.xml': '<Wrong/>' });
  const missing = path.join(root, 'missing.xml');
  await assert.rejects(quastel.scanJunk({ rulesPath: missing, userHome: root }), (error) => {
    assert.ok(error instanceof quastel.QuastelError);
    assert.equal(error.code, 'QS_NOT_FOUND');
    assert.equal(error.status, STATUS.NOT_FOUND);
    assert.match(error.message, /qs_product_scan_start answered QS_NOT_FOUND/);
    return true;
  });
  await assert.rejects(quastel.scanJunk({ rulesPath: path.join(root, 'bad.xml'), userHome: root }),
                       { code: 'QS_FAILED' });
});

test('wrong options are refused before the library is asked', async () => {
  const root = tree({});
  for (const options of [
    {}, { roots: [] }, { roots: '' }, { roots: [''] }, { roots: ['C:\\a\0b'] }, { roots: [5] },
    { roots: root, userHome: 'C:\\a\0b' }, { roots: root, systemRoot: '' },
    { roots: root, onProgress: 5 }, { roots: root, signal: {} }, { roots: root, progressInterval: 0 },
    null, undefined,
  ]) {
    await assert.rejects(quastel.scanLarge(options), TypeError);
  }
  await assert.rejects(quastel.scanJunk({ userHome: root }), TypeError);
});

test('a folder that does not exist finds nothing', async () => {
  const report = await quastel.scanLarge({ roots: path.join(folder, 'nowhere') });
  assert.deepEqual(report.rows, []);
  report.close();
});

test('every handle that was made is destroyed', async () => {
  const { native } = require('../lib/native');
  const functions = native();
  const { qs_product_scan_create: create, qs_product_scan_destroy: destroy } = functions;
  let alive = 0;
  let made = 0;
  functions.qs_product_scan_create = (...args) => {
    const status = create(...args);
    alive += status === STATUS.OK ? 1 : 0;
    made += 1;
    return status;
  };
  functions.qs_product_scan_destroy = (...args) => {
    const status = destroy(...args);
    alive -= status === STATUS.OK ? 1 : 0;
    return status;
  };
  try {
    const root = tree({ 'a.iso': LARGE });
    (await quastel.scanLarge({ roots: root })).close();
    await assert.rejects(quastel.scanJunk({ rulesPath: 'C:\\missing.xml', userHome: root }));
    const controller = new AbortController();
    const running = quastel.scanLarge({ roots: root, signal: controller.signal });
    controller.abort();
    // It may have been too fast for the abort.
    await running.then((report) => report.close(), (error) => assert.equal(error.name, 'AbortError'));
    assert.equal(made, 3);
    assert.equal(alive, 0);

    assert.equal(typeof global.gc, 'function', 'node needs --expose-gc for this test');
    await quastel.scanLarge({ roots: root });
    for (let i = 0; i < 50 && alive > 0; ++i) {
      global.gc();
      await pause(10);
    }
    assert.equal(made, 4);
    assert.equal(alive, 0, 'a forgotten report is collected with its handle');
  } finally {
    functions.qs_product_scan_create = create;
    functions.qs_product_scan_destroy = destroy;
  }
});
