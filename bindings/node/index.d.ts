/**
 * quastel_core.dll for Node.js: finds junk, large files and duplicates, and deletes what was picked.
 *
 * Identifiers, byte sizes and times are `bigint`: they are 64-bit numbers. Counts are `number`, and
 * an error is thrown should one ever be too large to be exact. Texts are passed unit by unit, so
 * that names with unpaired surrogates stay what they are.
 */

/** What onProgress of a scan receives. */
export interface ScanProgress {
  /** Files seen so far, reported or not. */
  filesVisited: number;
  /** Bytes in the files seen so far. */
  bytesVisited: bigint;
  /** Findings so far. */
  itemCount: number;
  /** Bytes in the findings so far. */
  totalBytes: bigint;
  /** A duplicate scan compares contents: the current path moves while the counters stand still. */
  comparing: boolean;
  /** The file that the scan works on; empty before the first one. */
  currentPath: string;
  /** Junk scans: the category that the scan walks. Else empty. */
  currentGroup: string;
}

/** What onProgress of a clean receives, and what a clean resolves to. */
export interface CleanResult {
  /** Items that the clean was asked to delete. */
  requested: number;
  /** Items attempted: `deleted` + `failed`. */
  processed: number;
  /** Files deleted. */
  deleted: number;
  /** Files left alone: changed since the scan, missing, locked, or not permitted. */
  failed: number;
  /** Bytes in the files deleted. */
  bytesFreed: bigint;
}

/** Options of everything that takes time. */
export interface WorkOptions<Progress> {
  /**
   * Stops the work. The promise then rejects with a QuastelAbortError, after the library has
   * stopped. A clean stops before the next file.
   */
  signal?: AbortSignal;
  /** Called while the work goes on. An error that it throws stops the work and rejects. */
  onProgress?: (progress: Progress) => void;
  /** Milliseconds between two calls of onProgress; 100 when not given. */
  progressInterval?: number;
}

/** Options of all scans. */
export interface ScanOptions extends WorkOptions<ScanProgress> {
  /** Stays out of the folders of the system and of AppData; true when not given. */
  protectSystem?: boolean;
  /** The profile folder; that of the current user when not given. */
  userHome?: string;
  /** The root of the system drive; taken from the environment when not given. */
  systemRoot?: string;
}

/** Options of the large-file and duplicate scans. */
export interface FolderScanOptions extends ScanOptions {
  /** The folder or folders to scan. */
  roots: string | Iterable<string>;
}

/** Options of the junk scan. */
export interface JunkScanOptions extends ScanOptions {
  /** Path of the rule document. */
  rulesPath: string;
}

export type ScanKind = 'junk' | 'large' | 'duplicate';
export type RowKind = ScanKind | 'group';
export type LargeClass = 'archives' | 'documents' | 'images' | 'media' | 'other';

/** One finding, or the header of a group of junk files. */
export interface Row {
  readonly kind: RowKind;
  /** Names the finding in a clean; null for headers. */
  readonly itemId: bigint | null;
  /** The group: the class of a large file, the set of a duplicate, the group of a junk file. */
  readonly groupId: bigint;
  /** The group around the row's group; 0n at the top level. */
  readonly parentGroupId: bigint;
  readonly path: string;
  readonly name: string;
  readonly title: string;
  readonly location: string;
  /** The file's size in bytes; 0n for headers. */
  readonly size: bigint;
  /** Last-write time: 100-nanosecond ticks since 0001-01-01 00:00 local time; 0n for headers. */
  readonly modified: bigint;
  readonly deletable: boolean;
  /** The row should be offered as already selected. */
  readonly preselect: boolean;
  /** A clean has deleted the file. */
  readonly deleted: boolean;
  /** The class of a large file; null for every other row. */
  readonly largeClass: LargeClass | null;
}

/** Times and counters of a scan. */
export interface Performance {
  elapsedMicroseconds: bigint;
  filesVisited: number;
  bytesVisited: bigint;
  candidates: number;
  sampledItems: number;
  hashedItems: number;
  rowCount: number;
  itemCount: number;
}

/**
 * What a scan found.
 *
 * It keeps the library's memory for the clean until it is closed. One that is forgotten is closed
 * when it is collected.
 */
export class Report {
  private constructor();
  readonly kind: ScanKind;
  /** In the order of the library. */
  readonly rows: readonly Row[];
  readonly performance: Performance;
  /** True once the report cannot be cleaned any more; its rows stay readable. */
  readonly closed: boolean;
  /** Frees the library's memory. Does nothing the second time; throws while a clean runs. */
  close(): void;
}

/** A call of the library that failed. */
export class QuastelError extends Error {
  /** The name of the status, such as "QS_INVALID_ARGUMENT". */
  readonly code: string;
  /** Its number. */
  readonly status: number;
  /** What a clean did before it failed; not there when it was refused. */
  readonly result?: CleanResult;
}

/** The rejection that an AbortSignal leads to; `cause` is the signal's reason. */
export class QuastelAbortError extends Error {
  readonly name: 'AbortError';
  readonly code: 'ABORT_ERR';
  /** What a scan had found; closed already. Not there when the scan had not begun. */
  readonly report?: Report;
  /** What a clean had done. Not there when it had not begun. */
  readonly result?: CleanResult;
}

/** Finds files of more than 10 MiB. */
export function scanLarge(options: FolderScanOptions): Promise<Report>;

/**
 * Finds sets of two or more files with equal content.
 *
 * Equal means equal in size, sample and 32-bit hash. That is no proof: compare the files byte by
 * byte before you delete what matters. The scan keeps a cache below `userHome`.
 */
export function scanDuplicates(options: FolderScanOptions): Promise<Report>;

/** Finds the files that a rule document names. */
export function scanJunk(options: JunkScanOptions): Promise<Report>;

/**
 * Deletes the files of rows for good, each only while it is what the scan saw.
 *
 * Resolves when at least one file was deleted, or none was asked for; some may have failed. The
 * library refuses ids that are unknown, repeated or deleted already, and those that name every copy
 * of a set of duplicates; then nothing is deleted. The rows' `deleted` is up to date afterwards,
 * whatever the outcome.
 */
export function clean(report: Report, itemIds: Iterable<bigint>,
                      options?: WorkOptions<CleanResult>): Promise<CleanResult>;

/**
 * Loads the DLL; once, and before everything else.
 *
 * Without it, the DLL is the one that the environment variable QUASTEL_CORE_DLL names, or
 * quastel_core.dll in the folder of this package.
 */
export function load(path?: string): void;

/** The version of the library, such as "0.4.0". */
export function version(): string;
