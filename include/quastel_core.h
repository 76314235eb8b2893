/**
 * \file
 * quastel_core: finds files that may be removed (junk, large files, duplicates) and removes the
 * ones that the caller picks. This header is the whole interface, for C11 and for C++.
 */

#ifndef QUASTEL_CORE_H_
#define QUASTEL_CORE_H_

#include <stdint.h>

#if !defined(_WIN32) && !defined(__cplusplus)
#include <uchar.h>
#endif
#if defined(_WIN32) && !defined(__cplusplus)
#include <wchar.h>
#endif

/*
 * CONVENTIONS
 *
 * They hold for every function; the functions below mention them only where they differ.
 *
 *  1. Encoding. Text is UTF-16 in units of qs_char and ends with a NUL. Lengths and capacities
 *     count units, not bytes and not characters. The few texts of type char are ASCII: the version,
 *     bucket names, hashes and keys. "Without regard to case" means that the ASCII letters A to Z
 *     equal a to z and every other unit equals itself alone, whatever the locale is.
 *
 *  2. Null. A pointer may be null only where its description says so. A null that is not allowed is
 *     answered (QS_INVALID_ARGUMENT, or 0 from a predicate), never dereferenced. A pointer that is
 *     not null must be valid: that cannot be checked. Pointers are needed until the call returns;
 *     the library keeps none of them.
 *
 *  3. Statuses. Functions that return qs_status answer QS_OK or the reason for the failure. Each
 *     lists the values that it can return. QS_FAILED stands in nearly every list because memory or
 *     a lock of the system can fail anywhere; it is then called "an internal failure". No C++
 *     exception leaves a function.
 *
 *  4. Predicates. Functions that return int32_t answer 1 or 0, without a reason. An internal
 *     failure is 0. The functions that remove a file are of this kind: 1 done, 0 not done.
 *
 *  5. Handles. A create function makes a handle and the destroy function of its family frees it.
 *     While a start or a clean runs on a handle, another start, clean or destroy on it is refused
 *     with QS_BUSY. The queries and cancels are not counted: the caller makes sure that none of
 *     them is inside the library, and none follows, once it destroys the handle. Different handles
 *     do not affect each other.
 *
 *  6. Text buffers. A text is returned through a buffer, its capacity in units with the terminator
 *     included, and a pointer that receives the capacity that the text needs (its length + 1).
 *     The needed capacity is stored first, also when the buffer is too small. The text is copied
 *     only when it fits whole; otherwise the buffer is left as it was and the answer is
 *     QS_BUFFER_TOO_SMALL. Text is never truncated. A null buffer with capacity 0 asks for the
 *     length alone. The empty text needs capacity 1. A text of a running scan may grow between two
 *     calls, so callers ask again until it fits. When a call returns several texts, each is copied
 *     or refused by itself, the record is filled in any case, and one refusal makes the answer
 *     QS_BUFFER_TOO_SMALL; so a caller that leaves out a text by a null buffer gets that answer
 *     although all the rest is there.
 *
 *  7. Records. Layouts are fixed; reserved members are 0 in what the library fills and ignored in
 *     what it reads. A record that begins with `size` is versioned: the caller sets `size` to
 *     sizeof the record before every call. A smaller value than this header's is refused, a larger
 *     one is accepted, and the library never touches more than the layout of this header. The
 *     three session records are packed to 4 bytes and are exactly 36, 20 and 28 bytes long.
 *
 *  8. Threads. "Threads: any" means at any time and together with every other call, other calls on
 *     the same handle included. A function that blocks works on the thread that called it; use a
 *     thread of your own for it and poll, read and cancel from another one. Callbacks arrive on the
 *     thread that made the call. No lock is held during a callback, so it may call the library. A
 *     callback should return normally; an exception that it throws ends the walk with QS_FAILED if
 *     the library's C++ runtime can catch it, and a callback must not leave by longjmp.
 *
 *  9. Cancelling. A cancel flag is a 32-bit integer of the caller: 0 means go on, anything else
 *     means stop. It may be null. Another thread sets it with an atomic store. The library never
 *     changes it but reads it with an atomic compare-exchange of 0 with 0, so it must be aligned to
 *     4 bytes and lie in writable memory. Scans and cleans of a handle have flags of their own and
 *     are cancelled by a function. What was found or deleted before the cancel stays.
 *
 * 10. Times. A file time is a 64-bit count of 100-nanosecond ticks since 0001-01-01 00:00 local
 *     time: the file's last-write FILETIME, converted to local time, plus 504911232000000000. The
 *     enumeration, the rows, the snapshots and qs_matches_date all use it; it is unsigned where it
 *     is reported and signed where it is an argument, with equal values. The system converts with
 *     the offset in force at the moment of reading, so a snapshot from before a change of the clock
 *     or the time zone no longer matches. Durations say their unit.
 *
 * 11. Sizes, counts, identifiers. File sizes are bytes. Counts, capacities and indexes are
 *     unsigned 64-bit. A row's index is its place in the report. A row's item_id names a finding in
 *     a clean: 0, 1, 2 ... in report order, counting items and not group headers. Indexes and ids
 *     are valid until the next scan starts on the handle.
 *
 * 12. Paths. Both "\" and "/" are accepted as separators; the library inserts "\". Relative paths
 *     are resolved against the current directory of the process. A path of less than 248 units goes
 *     to the system, and comes back in callbacks and rows, exactly as it is spelled. A longer one
 *     gets its extended-length form: made absolute, with "\\?\" or "\\?\UNC\" in front, unless it
 *     has that already. No walk follows or reports a junction, a symbolic link or any other reparse
 *     point, and no deletion removes one or passes through one. The functions that read one named
 *     file (hashes, samples, the rule document) follow links as the system does.
 *
 * 13. Snapshots. The path, size and last-write time that a row or callback gave. The cleans, and
 *     the deletion functions with "snapshot" in their name, remove a file only while all of it is
 *     unchanged. On some disks a file's name ends in a dot or a blank. Unless it has the
 *     extended-length prefix, its path means another file to the system: the cleans never delete
 *     such a row. A walk does not enter a folder whose path would lead into another one.
 *
 * 14. Protection. When it is asked for, the folders Program Files, Program Files (x86), Windows,
 *     ProgramData and $Recycle.Bin directly below `system_root` and the folder AppData directly
 *     below `user_home` are protected, each with everything in it. Names are compared without
 *     regard to case. `system_root` is the root of the system drive, such as C:\, and `user_home`
 *     the profile folder, such as C:\Users\name; the library takes neither from the environment.
 *
 * 15. Surroundings. The library has no settings, no log and no global state. It writes one file of
 *     its own, the hash cache of the duplicate scan, below the request's `user_home`:
 *       AppData\Local\Vantrelloc\Ferrowynd\cache\duplicate-hashes-v1.bin
 *     It reads one environment variable: QUASTEL_SCAN_HOLD_MS delays the start of every scan by
 *     that many milliseconds (at most 5000; values of 16 or more characters are ignored) while the
 *     scan already counts as running. It exists to try out polling and cancelling; a cancel ends
 *     the delay within 25 ms.
 *
 * A PRODUCT SCAN, FROM START TO END
 *
 *   qs_product_scan_create                  one handle for any number of scans, one at a time
 *   qs_product_scan_start                   blocks; call it on a worker thread
 *     qs_product_scan_poll, _cancel, ...    from another thread meanwhile
 *   qs_product_scan_report_count, _report_row    read the findings
 *   qs_product_scan_start_clean             delete the chosen item_ids; blocks like start
 *   qs_product_scan_destroy
 *
 * The session (qs_session_...) is the smaller relative: one folder, a flat list of files, a clean
 * by row index. All other functions are building blocks that need no handle.
 */

/**
 * Marks every function of the interface.
 *
 * Without further definitions a Windows program gets the functions imported from quastel_core.dll.
 * QUASTEL_CORE_STATIC is for programs that link the code of the library itself, without the DLL; it
 * must then be defined wherever this header is included. QUASTEL_CORE_BUILDING is for the build of
 * the DLL alone, whose exports a module-definition file lists. Elsewhere than on Windows QS_API is
 * empty.
 */
#if defined(_WIN32) && !defined(QUASTEL_CORE_STATIC) && !defined(QUASTEL_CORE_BUILDING)
#define QS_API __declspec(dllimport)
#else
#define QS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A UTF-16 code unit: wchar_t on Windows, char16_t elsewhere. */
#if defined(_WIN32)
typedef wchar_t qs_char;
#else
typedef char16_t qs_char;
#endif

/* ---- Statuses ---------------------------------------------------------------------------------*/

/** The answer of most functions: one of the values below and no other. */
typedef uint32_t qs_status;

/** Success. */
#define QS_OK ((qs_status)0)
/**
 * An argument is missing or not allowed: a null or empty one that is required, a record whose size
 * is too small, an unknown kind or mode, a row that cannot be cleaned, a rule without its path.
 */
#define QS_INVALID_ARGUMENT ((qs_status)1)
/**
 * A text buffer is null or too short. The needed capacity was stored if there is a pointer for it
 * (convention 6).
 */
#define QS_BUFFER_TOO_SMALL ((qs_status)2)
/**
 * An internal failure, a file that cannot be read, a rule document that cannot be used, or a clean
 * whose deletions failed.
 */
#define QS_FAILED ((qs_status)3)
/** A row index is not below the row count, or the rule document does not exist. */
#define QS_NOT_FOUND ((qs_status)4)
/** The operation stopped because a cancel was requested. */
#define QS_CANCELLED ((qs_status)5)
/** The library has no scan of this kind, or there is no scan result that could be cleaned. */
#define QS_UNSUPPORTED ((qs_status)6)
/** A start, clean or destroy is already in progress on the handle. */
#define QS_BUSY ((qs_status)7)

/* ---- Kinds, states, classes, modes ------------------------------------------------------------*/

/** Scan kind: files in the folders that a rule document names. */
#define QS_SCAN_KIND_JUNK_RULES ((uint32_t)0)
/** Scan kind: files of more than 10485760 bytes (10 MiB). */
#define QS_SCAN_KIND_LARGE_FILES ((uint32_t)1)
/** Scan kind: sets of two or more files with equal content. */
#define QS_SCAN_KIND_DUPLICATES ((uint32_t)2)

/** State of a scan or clean: none was started yet. */
#define QS_STATE_IDLE ((uint32_t)0)
/** State of a scan or clean: at work. */
#define QS_STATE_RUNNING ((uint32_t)1)
/** State of a scan or clean: ended with QS_OK. */
#define QS_STATE_DONE ((uint32_t)2)
/** State of a scan or clean: ended with QS_CANCELLED. */
#define QS_STATE_CANCELLED ((uint32_t)3)
/** State of a scan or clean: ended with any other status. */
#define QS_STATE_FAILED ((uint32_t)4)

/** Row kind: a junk file. */
#define QS_ROW_JUNK ((uint32_t)0)
/** Row kind: a large file. */
#define QS_ROW_LARGE_FILE ((uint32_t)1)
/** Row kind: one file of a set of duplicates. */
#define QS_ROW_DUPLICATE ((uint32_t)2)
/** Row kind: the header of a group of junk files. It is no finding and cannot be cleaned. */
#define QS_ROW_GROUP ((uint32_t)3)

/** The item_id of every group header. */
#define QS_NO_ITEM_ID UINT64_MAX

/** Large-file class: archives, such as .zip, .7z, .iso, .cab. */
#define QS_LARGE_ARCHIVES ((uint32_t)0)
/** Large-file class: documents, such as .docx, .xlsx, .pdf, .txt. */
#define QS_LARGE_DOCUMENTS ((uint32_t)1)
/** Large-file class: images, such as .jpg, .png, .psd, .raw. */
#define QS_LARGE_IMAGES ((uint32_t)2)
/** Large-file class: sound and film, such as .mp4, .mkv, .mp3, .wav. */
#define QS_LARGE_MEDIA ((uint32_t)3)
/** Large-file class: every other extension, and none. */
#define QS_LARGE_OTHER ((uint32_t)4)

/** Session mode: keep every file. */
#define QS_SESSION_ALL_FILES ((uint32_t)0)
/** Session mode: keep the files of more than 10485760 bytes (10 MiB). */
#define QS_SESSION_LARGE_FILES ((uint32_t)1)
/** Session mode: keep every file, but refuse a clean. */
#define QS_SESSION_INSPECT ((uint32_t)2)

/* ---- Handles and callbacks --------------------------------------------------------------------*/

/** A scan of one folder and the clean of its rows; made by qs_session_create. */
typedef struct qs_session qs_session;
/** A scan of one of the three kinds and the clean of its rows; made by qs_product_scan_create. */
typedef struct qs_product_scan qs_product_scan;

/**
 * Receives one file of an enumeration.
 *
 * Both texts are valid during the call only.
 *
 * \param user the pointer that was given to the enumeration, unchanged
 * \param path the full path: folder, "\", file name (convention 12)
 * \param size the file's size in bytes
 * \param last_write the file's last-write time in ticks (convention 10)
 * \param name the file name alone, as the folder lists it
 */
typedef void (*qs_file_callback)(void* user, const qs_char* path, uint64_t size,
                                 uint64_t last_write, const qs_char* name);

/**
 * Receives one subfolder of an enumeration.
 *
 * \param user the pointer that was given to the enumeration, unchanged
 * \param path the subfolder's full path (convention 12), valid during the call only
 */
typedef void (*qs_directory_callback)(void* user, const qs_char* path);

/* ---- Session records --------------------------------------------------------------------------*/

#pragma pack(push, 4)
/** What qs_session_poll_scan fills; 36 bytes. */
typedef struct qs_session_scan_status {
  /** QS_STATE_...; of the running or the last scan. */
  uint32_t state;
  /** 0. */
  uint32_t reserved;
  /** Files seen so far, kept or not. */
  uint64_t files_visited;
  /** Bytes in the files seen so far. */
  uint64_t bytes_visited;
  /** Rows in the report so far. */
  uint64_t row_count;
  /** QS_...; the status of the last finished scan, 0 before and while one runs. */
  uint32_t status;
} qs_session_scan_status;

/** The numbers of a row, filled by qs_session_report_row; 20 bytes. */
typedef struct qs_session_row {
  /** The file's size in bytes. */
  uint64_t size;
  /** The file's last-write time in ticks (convention 10). */
  uint64_t modified;
  /** 1 once a clean has deleted the file, else 0. */
  uint32_t deleted;
} qs_session_row;

/** What qs_session_poll_clean fills; 28 bytes. */
typedef struct qs_session_clean_status {
  /** QS_STATE_...; of the running or the last clean. */
  uint32_t state;
  /** 0. */
  uint32_t reserved;
  /** Rows that the running or last clean was asked to delete. */
  uint64_t requested;
  /** Files deleted so far. Unlike in a product clean, the failed one is not counted. */
  uint64_t processed;
  /** QS_...; the status of the last finished clean, 0 before and while one runs. */
  uint32_t status;
} qs_session_clean_status;
#pragma pack(pop)

/* ---- Product scan records ---------------------------------------------------------------------*/

/*
 * RULE DOCUMENTS
 *
 * A junk scan reads its rules from a file of at most 2147483647 bytes in a small subset of XML,
 * encoded as UTF-8 or as UTF-16 little-endian with a byte-order mark. Element and attribute names
 * are case-sensitive, attribute values are quoted, text between elements is ignored, and the only
 * entities are &amp; &lt; &gt; &quot; and &apos;, replaced in this order (so &amp;lt; gives <). A
 * declaration may stand before and after the root element, comments anywhere between elements;
 * CDATA sections, document types and elements nested more than 256 deep are refused.
 *
 *   Root                      the root element; every child that is no Category is ignored
 *     Category DisplayName    a group of findings; required and not empty. Holds the rules below,
 *                             and further categories
 *       Folder Path [Pattern] [DisplayName]
 *                             every file below Path that matches Pattern ("*" when absent or
 *                             empty); the group is called DisplayName, or the last component
 *                             of Path
 *       FolderList StartPath EndPath [ContainsPath] [DisplayName]
 *                             for each direct subfolder of StartPath whose full path contains
 *                             ContainsPath (compared case-sensitively): every file below that
 *                             subfolder joined with EndPath; the group is called DisplayName, or
 *                             EndPath as written
 *       ChildrenList StartPath
 *                             for each direct subfolder of StartPath a group of that name with
 *                             every file below it; then the files directly in StartPath, which
 *                             join the enclosing category
 *
 * Path and StartPath may hold {UserHome} and {Root} (see qs_expand_junk_path); EndPath and
 * ContainsPath are used as written. Elements of any other name are ignored with everything below
 * them. A rule folder that does not exist finds nothing. A file that two rules reach has two rows.
 * Protection, size and age play no part in a junk scan. What is found below the top-level category
 * that is called Page_JunkFiles_Report_Category_Downloads is reported without a preselection.
 */

/** What a product scan is asked to do; 56 bytes, read by qs_product_scan_start. */
typedef struct qs_product_scan_request {
  /** sizeof(qs_product_scan_request); less than 56 is refused. */
  uint32_t size;
  /** QS_SCAN_KIND_... */
  uint32_t kind;
  /**
   * The folders to scan, as an array of `root_count` texts, none of them null or empty. Null only
   * when `root_count` is 0. A folder that lies in another one of them is not scanned twice. A
   * folder that does not exist finds nothing. Junk scans take their folders from the rules.
   */
  const qs_char* const* roots;
  /** Number of roots; at least 1 for large files and duplicates. */
  uint64_t root_count;
  /**
   * The user's profile folder. Null counts as empty. Required with `protect_system` and for junk
   * scans. A duplicate scan keeps its hash cache below it, and none when it is not absolute.
   */
  const qs_char* user_home;
  /** The root of the system drive. Null counts as empty. Required as `user_home` is. */
  const qs_char* system_root;
  /**
   * 0, or anything else to stay out of the protected folders (convention 14). Junk scans only
   * check that the two folders are given.
   */
  uint32_t protect_system;
  /** Not read. */
  uint32_t reserved;
  /** Path of the rule document. Null counts as empty. Required for junk scans, else not used. */
  const qs_char* rules_path;
} qs_product_scan_request;

/** The numbers of a row, filled by qs_product_scan_report_row; 56 bytes. */
typedef struct qs_product_scan_row {
  /** Names the finding in a clean: 0, 1, 2 ... in report order; QS_NO_ITEM_ID for headers. */
  uint64_t item_id;
  /**
   * The group. Large files: the class + 1, so 1 to 5. Duplicates: the number of the set, from 1 on.
   * Junk: the group whose header row stands before; a header has its own id here. Top-level
   * categories are 1, 2, 3 ...; all other junk groups have ids from 2^60 on, with gaps.
   */
  uint64_t group_id;
  /** QS_ROW_... */
  uint32_t kind;
  /** 0. */
  uint32_t reserved;
  /** The file's size in bytes; 0 for headers. */
  int64_t size;
  /** The file's last-write time in ticks (convention 10); 0 for headers. */
  uint64_t modified;
  /** 1 when the row may be named in a clean (every item), 0 for headers. */
  uint32_t deletable;
  /**
   * 1 when the row should be offered as already selected: junk files outside the downloads
   * category. Else 0.
   */
  uint32_t preselect;
  /** 1 once a clean has deleted the file, else 0. */
  uint32_t deleted;
  /** QS_LARGE_... of a large file; QS_LARGE_OTHER for every other row. */
  uint32_t large_class;
} qs_product_scan_row;

/** What qs_product_scan_poll fills; 48 bytes, no size field. */
typedef struct qs_product_scan_status {
  /** QS_STATE_...; of the running or the last scan. */
  uint32_t state;
  /**
   * 0 at the start of a scan, 1 once a duplicate scan compares contents: from then on the current
   * path moves while files_visited and bytes_visited stand still.
   */
  uint32_t path_published;
  /** Files seen so far, reported or not. */
  uint64_t files_visited;
  /** Bytes in the files seen so far. */
  uint64_t bytes_visited;
  /** Bytes in the items of the report so far. A clean does not reduce it. */
  uint64_t total_bytes;
  /** Items in the report so far, headers not counted. A clean does not reduce it. */
  uint64_t item_count;
  /** QS_...; the status of the last finished scan, 0 before and while one runs. */
  uint32_t status;
  /** 0. */
  uint32_t reserved;
} qs_product_scan_status;

/**
 * What qs_product_scan_get_performance fills; 192 bytes.
 *
 * Times are microseconds. A stage that the scan's kind does not have, or has not reached, is 0.
 */
typedef struct qs_product_scan_performance {
  /** Set by the caller to sizeof the record; less than 192 is refused. Written back as 192. */
  uint32_t size;
  /** QS_SCAN_KIND_... of the running or last scan. */
  uint32_t kind;
  /** Microseconds since the start of the scan; the whole time once it has ended. */
  uint64_t elapsed_us;
  /** Large files and duplicates: removing the roots that lie in other roots. */
  uint64_t filter_roots_us;
  /** Junk: loading the rule document. */
  uint64_t load_rules_us;
  /** All kinds: walking the folders. */
  uint64_t walk_us;
  /** Duplicates: grouping the candidates by size. */
  uint64_t group_by_size_us;
  /** Duplicates: sampling the files that share their size with another one. */
  uint64_t sample_us;
  /** Duplicates: grouping by sample. */
  uint64_t sample_keys_us;
  /** Duplicates: choosing the files to hash in full, and reporting the sets that need no hash. */
  uint64_t plan_hashes_us;
  /** Duplicates: hashing files in full. */
  uint64_t hash_us;
  /** Duplicates: grouping by hash, and reporting the sets that needed one. */
  uint64_t group_by_hash_us;
  /** Files seen. */
  uint64_t files_visited;
  /** Bytes in the files seen. */
  uint64_t bytes_visited;
  /** Duplicates: files found that may have a duplicate: all but paging and protected files. */
  uint64_t candidates;
  /** Duplicates: files with a sample, taken now or known from the hash cache. */
  uint64_t sampled_items;
  /** Duplicates: files with a full hash, computed now or known from the hash cache. */
  uint64_t hashed_items;
  /** Duplicates: sets found without full hashes, since their files have 150 bytes or less. */
  uint64_t unhashed_groups;
  /** Rows in the report, headers included. */
  uint64_t row_count;
  /** Items in the report, headers not counted. */
  uint64_t item_count;
  /** QS_...; the status of the last finished scan, 0 before and while one runs. */
  uint32_t status;
  /** 0. */
  uint32_t reserved[9];
} qs_product_scan_performance;

/** What qs_product_scan_poll_clean fills; 32 bytes, no size field. */
typedef struct qs_product_clean_status {
  /** QS_STATE_...; of the running or last clean of this report. A scan's start sets it to idle. */
  uint32_t state;
  /** 0. */
  uint32_t reserved;
  /** Items that the running or last clean was asked to delete. */
  uint64_t requested;
  /** Items attempted so far, deleted or failed. */
  uint64_t processed;
  /** QS_...; the status of the last finished clean, 0 before and while one runs. */
  uint32_t status;
  /** 0. */
  uint32_t reserved2;
} qs_product_clean_status;

/** What qs_product_scan_poll_clean_detailed fills; 56 bytes. */
typedef struct qs_product_clean_detail {
  /** Set by the caller to sizeof the record; less than 56 is refused. Written back as 56. */
  uint32_t size;
  /** QS_STATE_...; of the running or last clean of this report. A scan's start sets it to idle. */
  uint32_t state;
  /** Items that the running or last clean was asked to delete. */
  uint64_t requested;
  /** Items attempted so far: `deleted` + `failed`. */
  uint64_t processed;
  /** Files deleted so far. */
  uint64_t deleted;
  /** Files left alone so far: changed, missing, locked, or not permitted. */
  uint64_t failed;
  /** Bytes in the files deleted so far. */
  uint64_t bytes_freed;
  /** QS_...; the status of the last finished clean, 0 before and while one runs. */
  uint32_t status;
  /** 0. */
  uint32_t reserved;
} qs_product_clean_detail;

/* ---- Version ----------------------------------------------------------------------------------*/

/**
 * Gives the version of the library, such as "0.4.0".
 *
 * \return a static text of type char, the same pointer on every call; not to be freed. Never null.
 *
 * Threads: any.
 */
QS_API const char* qs_version(void);

/* ---- Paths ------------------------------------------------------------------------------------*/

/**
 * Gives the form in which the library hands a path to the system (convention 12).
 *
 * Despite its name it changes long paths only: one of less than 248 units comes back as it is, with
 * its separators, dots and letter case. So does a path that has the extended-length prefix already,
 * and one that the system cannot resolve gets the prefix as it is.
 *
 * \param path the path; may be empty, not null
 * \param out receives the result; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; may be null
 * \return
 * - QS_OK: the result is in `out`;
 * - QS_INVALID_ARGUMENT: `path` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_normalize_path(const qs_char* path, qs_char* out, uint64_t capacity,
                                   uint64_t* needed);

/**
 * Gives the path of something named relative to a folder.
 *
 * A relative path that begins with a separator, or whose second unit is ":", counts as absolute and
 * is the whole result, unchanged. Otherwise the result is `base` without its trailing separators,
 * one "\", and `relative` without its leading ones; with nothing left of `base` it is `relative`
 * alone. Dots are kept.
 *
 * \param base the folder; may be empty, not null
 * \param relative what to append; may be empty, not null. Empty gives `base` with exactly one
 *   trailing separator
 * \param out receives the result; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; may be null
 * \return
 * - QS_OK: the result is in `out`;
 * - QS_INVALID_ARGUMENT: `base` or `relative` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_path_combine(const qs_char* base, const qs_char* relative, qs_char* out,
                                 uint64_t capacity, uint64_t* needed);

/**
 * Tells whether a text occurs in another one.
 *
 * It knows nothing of paths: the search is case-sensitive and respects no name boundaries, unlike
 * every other comparison here. Rule documents use it for ContainsPath.
 *
 * \param haystack the text to search in; null gives 0
 * \param needle the text to search for; null and empty occur in every text that is not null
 * \return 1 when it occurs, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_path_contains(const qs_char* haystack, const qs_char* needle);

/**
 * Tells whether two paths have the same parent folder.
 *
 * Both are made absolute first, and compared without regard to case. Neither needs to exist. A
 * drive root is its own parent. An extended-length prefix is not removed: a path with it and the
 * same path without it have different parents.
 *
 * \param a one path; null gives 0
 * \param b the other path; null gives 0
 * \return 1 when the parents are equal; 0 when they are not, or when the system cannot resolve one
 * of the paths.
 *
 * Threads: any.
 */
QS_API int32_t qs_is_in_same_directory(const qs_char* a, const qs_char* b);

/**
 * Tells whether a path is a folder that the library would enter.
 *
 * \param path the path; null gives 0
 * \return 1 for an existing folder; 0 for a file, for a junction or folder link even if its target
 * exists, for what cannot be queried and for what does not exist.
 *
 * Threads: any.
 */
QS_API int32_t qs_directory_exists(const qs_char* path);

/* ---- Enumeration ------------------------------------------------------------------------------*/

/**
 * Reports the files of a folder through a callback.
 *
 * The same as qs_enumerate_files_ex without protection; everything that is said there holds.
 *
 * \param root the folder; not null, not empty
 * \param pattern wildcard for file names; null and empty mean "*"
 * \param recursive 0 for the root's own files, anything else for its subfolders as well
 * \param callback receives each file; not null
 * \param user passed to the callback; may be null
 * \param cancel cancel flag (convention 9); may be null
 * \return
 * - QS_OK: the walk is complete, or there was nothing to walk;
 * - QS_INVALID_ARGUMENT: `root` is null or empty, or `callback` is null; no callback was made;
 * - QS_FAILED: the callback threw an exception, or an internal failure; the walk ended there;
 * - QS_CANCELLED: the cancel flag was set; the walk ended there.
 *
 * Threads: any. Blocks until the walk ends.
 */
QS_API qs_status qs_enumerate_files(const qs_char* root, const qs_char* pattern, uint32_t recursive,
                                    qs_file_callback callback, void* user, uint32_t* cancel);

/**
 * Reports the files of a folder through a callback and can keep out of protected folders.
 *
 * A root that does not exist, is no folder, is a reparse point or is protected has no files: the
 * answer is QS_OK without a callback. Subfolders that cannot be listed are skipped silently.
 * Reparse points, files and folders alike, are neither reported nor entered. All files of a folder
 * are reported before those of its subfolders, in the order of the system's listing; subfolders are
 * then visited last found first. A pattern selects files only and never keeps a subfolder from
 * being visited. A root with a trailing separator gives paths with a doubled separator after it.
 *
 * \param root the folder; not null, not empty
 * \param pattern wildcard for file names, matched by the system's rules; null and empty mean "*"
 * \param recursive 0 for the root's own files, anything else for its subfolders as well
 * \param protect_system 0, or anything else to leave out the protected folders (convention 14),
 *   which is done only if both of the next two arguments are given
 * \param system_root root of the system drive; null switches the protection off
 * \param user_home the profile folder; null switches the protection off
 * \param callback receives each file; not null
 * \param user passed to the callback; may be null
 * \param cancel cancel flag (convention 9), read before each folder and each entry; may be null.
 *   Set already when the call is made, it gives QS_CANCELLED, unless there is nothing to walk
 * \return
 * - QS_OK: the walk is complete, or there was nothing to walk;
 * - QS_INVALID_ARGUMENT: `root` is null or empty, or `callback` is null; no callback was made;
 * - QS_FAILED: the callback threw an exception, or an internal failure; the walk ended there;
 * - QS_CANCELLED: the cancel flag was set; no callback was made after it was seen.
 *
 * Threads: any. Blocks until the walk ends.
 */
QS_API qs_status qs_enumerate_files_ex(const qs_char* root, const qs_char* pattern,
                                       uint32_t recursive, uint32_t protect_system,
                                       const qs_char* system_root, const qs_char* user_home,
                                       qs_file_callback callback, void* user, uint32_t* cancel);

/**
 * Reports the direct subfolders of a folder through a callback.
 *
 * It does not descend. A root that does not exist, cannot be listed, is no folder or is a reparse
 * point has none: the answer is QS_OK without a callback. Junctions and folder links are left out.
 *
 * \param root the folder; not null, not empty
 * \param callback receives each subfolder; not null
 * \param user passed to the callback; may be null
 * \param cancel cancel flag (convention 9), read before each entry; may be null
 * \return
 * - QS_OK: the listing is complete, or there was nothing to list;
 * - QS_INVALID_ARGUMENT: `root` is null or empty, or `callback` is null; no callback was made;
 * - QS_FAILED: the callback threw an exception, or an internal failure; the listing ended there;
 * - QS_CANCELLED: the cancel flag was set; no callback was made after it was seen.
 *
 * Threads: any. Blocks until the listing ends.
 */
QS_API qs_status qs_enumerate_directories(const qs_char* root, qs_directory_callback callback,
                                          void* user, uint32_t* cancel);

/* ---- Filters and matchers ---------------------------------------------------------------------*/

/**
 * Tells whether a path names a paging, swap or hibernation file.
 *
 * Only the last component counts, in any folder of any drive and without regard to case:
 * pagefile.sys, swapfile.sys or hiberfil.sys. The file need not exist.
 *
 * \param path the path; null gives 0
 * \return 1 for one of the three names, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_is_ignored(const qs_char* path);

/**
 * Tells whether a path is a protected folder or lies in one (convention 14).
 *
 * The paths are made absolute and compared without regard to case; none of them needs to exist. The
 * same folder names on another drive, or deeper in the tree, are not protected.
 *
 * \param path the path; null gives 0
 * \param system_root root of the system drive; null gives 0
 * \param user_home the profile folder; null gives 0
 * \return 1 when protected, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_is_in_whitelist(const qs_char* path, const qs_char* system_root,
                                  const qs_char* user_home);

/**
 * Reduces a list of folders to those that do not lie in another one of the list.
 *
 * Folders are compared as absolute paths without regard to case; of equal ones the first stays. The
 * result keeps the spellings given, sorted by the length of the absolute path, the shortest first
 * and equal lengths in the order given. It is a sequence of texts, each with its NUL, and one more
 * NUL at the end; the empty list is a single NUL. An empty text contains nothing.
 *
 * \param paths array of `count` folders, none of them null; may be null when `count` is 0
 * \param count number of folders
 * \param out receives the list; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param kept_count receives the number of folders in the list; may be null
 * \param needed receives the needed capacity in units, all NULs included; may be null
 * \return
 * - QS_OK: the list is in `out`;
 * - QS_INVALID_ARGUMENT: `paths` is null although `count` is not 0, or an entry is null;
 *   `kept_count` and `needed` are 0, `out` is unchanged;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `kept_count` and `needed` are
 *   stored, `out` is unchanged;
 * - QS_FAILED: an internal failure; `out` is unchanged, and the counts must not be used.
 *
 * Threads: any.
 */
QS_API qs_status qs_filter_dir(const qs_char* const* paths, uint64_t count, qs_char* out,
                               uint64_t capacity, uint64_t* kept_count, uint64_t* needed);

/**
 * Tells whether a size belongs to a size class.
 *
 * Exactly 536870912 bytes (512 MiB) and exactly 1073741824 bytes (1 GiB) belong to none of the
 * classes 1 to 3.
 *
 * \param size size in bytes; a negative one counts as small
 * \param mode 1 for more than 1 GiB, 2 for more than 512 MiB and less than 1 GiB, 3 for less than
 *   512 MiB; 0 and every other value match all sizes
 * \return 1 when it matches, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_matches_size(int64_t size, uint32_t mode);

/**
 * Tells whether a file time belongs to an age class.
 *
 * The limit is the same day and time of day a year or a month before `now`, moved to the last day
 * of a month that is too short: a month before 31 March is 28 or 29 February.
 *
 * \param file_time the file's time in ticks (convention 10)
 * \param now the current local time in ticks
 * \param mode 0 for all; 1 for older than a year; 3 for a month old or younger; 2 and every other
 *   value for older than a month
 * \return 1 when it matches; 0 when it does not and, in every mode but 0, when `now` or the limit
 * lies outside the calendar of the system, which begins in 1601.
 *
 * Threads: any.
 */
QS_API int32_t qs_matches_date(int64_t file_time, int64_t now, int32_t mode);

/* ---- Deletion ---------------------------------------------------------------------------------*/

/*
 * The five functions of this group answer 1 or 0 and do not say why they refused. All of them
 * refuse a reparse point, and anything below one: every folder from the item's parent to the root
 * must exist and be a real folder. Nothing is shown to the user, and no attribute is changed first,
 * so a read-only file is not deleted. The check and the removal are separate steps; another process
 * can act between them.
 */

/**
 * Deletes a file, or an empty folder, for good.
 *
 * A folder with anything in it stays as it is.
 *
 * \param path the file or folder; null and empty give 0
 * \return 1 when it was removed; 0 when it was not: missing, refused, read-only, in use, not empty
 * or not permitted.
 *
 * Threads: any.
 */
QS_API int32_t qs_delete_permanently(const qs_char* path);

/**
 * Moves a file to the Recycle Bin, or deletes an empty folder for good.
 *
 * Folders do not go to the Recycle Bin. Two ways of the shell are tried one after the other; of the
 * second one, which cannot take extended-length paths, the library believes the report and does not
 * check that the file is gone. COM is initialised for the calling thread as a single-threaded
 * apartment during the call, unless the thread is in the multithreaded one.
 *
 * \param path the file or folder; null and empty give 0
 * \return 1 when the file was moved or the folder removed, else 0.
 *
 * Threads: any. Blocks while the
 * shell works.
 */
QS_API int32_t qs_move_to_recycle_bin(const qs_char* path);

/**
 * Tells whether a file still is what a scan saw (convention 13).
 *
 * \param path the file; null and empty give 0
 * \param size the size in bytes that was reported; negative gives 0
 * \param last_write the last-write time that was reported, compared to the tick
 * \return 1 for a plain file of exactly this size and time; 0 for everything else, also for a file
 * that is missing, cannot be queried or lies below a reparse point.
 *
 * Threads: any.
 */
QS_API int32_t qs_file_matches_snapshot(const qs_char* path, int64_t size, int64_t last_write);

/**
 * Deletes a file for good if it still is what a scan saw.
 *
 * The same as qs_file_matches_snapshot followed by qs_delete_permanently. Folders are refused.
 *
 * \param path the file; null and empty give 0
 * \param size the size in bytes that was reported; negative gives 0
 * \param last_write the last-write time that was reported, compared to the tick
 * \return 1 when it was deleted, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_delete_snapshot_permanently(const qs_char* path, int64_t size,
                                              int64_t last_write);

/**
 * Moves a file to the Recycle Bin if it still is what a scan saw.
 *
 * The same as qs_file_matches_snapshot followed by qs_move_to_recycle_bin. Folders are refused.
 *
 * \param path the file; null and empty give 0
 * \param size the size in bytes that was reported; negative gives 0
 * \param last_write the last-write time that was reported, compared to the tick
 * \return 1 when it was moved, else 0.
 *
 * Threads: any. Blocks while the shell works.
 */
QS_API int32_t qs_move_snapshot_to_recycle_bin(const qs_char* path, int64_t size,
                                               int64_t last_write);

/* ---- Session scan -----------------------------------------------------------------------------*/

/**
 * Makes a session: idle, without rows.
 *
 * \param session_out receives the handle, to be freed by qs_session_destroy; not null
 * \return
 * - QS_OK: the handle is stored;
 * - QS_INVALID_ARGUMENT: `session_out` is null;
 * - QS_FAILED: an internal failure; null is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_session_create(qs_session** session_out);

/**
 * Frees a session with its rows.
 *
 * The answer QS_BUSY leaves the session as it was, so it can be destroyed later. See convention 5
 * for queries on other threads.
 *
 * \param session the handle; invalid after QS_OK
 * \return
 * - QS_OK: the session is gone;
 * - QS_INVALID_ARGUMENT: `session` is null;
 * - QS_FAILED: an internal failure; the session is still there;
 * - QS_BUSY: a scan, clean or destroy is in progress on the session.
 *
 * Threads: any.
 */
QS_API qs_status qs_session_destroy(qs_session* session);

/**
 * Walks a folder with all its subfolders and keeps a row for each file, in the order found.
 *
 * The old rows are discarded; the state of an earlier clean stays as it was. A folder that does not
 * exist gives no rows and QS_OK. There is no protection: paging files and system folders are
 * reported like all others. After a failure or a cancel the rows found so far can be read.
 *
 * \param session the handle
 * \param root the folder; not null, not empty
 * \param mode QS_SESSION_...
 * \return the status that qs_session_poll_scan gives from then on, or a refusal:
 * - QS_OK: the scan is complete; its state is done;
 * - QS_INVALID_ARGUMENT: `session` is null, `root` is null or empty, or `mode` is unknown; this is
 *   checked first, and nothing changes;
 * - QS_FAILED: an internal failure; the state is failed;
 * - QS_CANCELLED: the scan was cancelled; its state is cancelled;
 * - QS_BUSY: a scan, clean or destroy is in progress on the session; nothing changes.
 *
 * Threads: any. Blocks until the scan ends.
 */
QS_API qs_status qs_session_start_scan(qs_session* session, const qs_char* root, uint32_t mode);

/**
 * Gives the state and the counters of the running or last scan.
 *
 * The members are read one after the other while the scan goes on, so they may differ by a few
 * files.
 *
 * \param session the handle
 * \param status receives the record, all 36 bytes; not null
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `session` or `status` is null; nothing is stored;
 * - QS_FAILED: an internal failure; the record must not be used.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_poll_scan(qs_session* session, qs_session_scan_status* status);

/**
 * Asks the running scan to stop.
 *
 * It does not wait: qs_session_start_scan returns QS_CANCELLED soon after, on its own thread.
 * Without a running scan it does nothing; a cancel is never kept for a later scan.
 *
 * \param session the handle
 * \return
 * - QS_OK: in every other case;
 * - QS_INVALID_ARGUMENT: `session` is null;
 * - QS_FAILED: an internal failure; the scan goes on.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_cancel_scan(qs_session* session);

/**
 * Gives the path of the file that the scan saw last.
 *
 * It is empty before the first file and stays after the scan.
 *
 * \param session the handle
 * \param out receives the path; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; not null here, unlike elsewhere
 * \return
 * - QS_OK: the path is in `out`;
 * - QS_INVALID_ARGUMENT: `session` or `needed` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_scan_current_path(qs_session* session, qs_char* out, uint64_t capacity,
                                              uint64_t* needed);

/**
 * Gives the number of rows.
 *
 * \param session the handle
 * \param count receives the number; it grows while a scan runs; not null
 * \return
 * - QS_OK: the number is stored;
 * - QS_INVALID_ARGUMENT: `session` or `count` is null; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_report_count(qs_session* session, uint64_t* count);

/**
 * Gives a row: path and name of a file with its numbers.
 *
 * A row does not change once it is there, apart from its mark `deleted`.
 *
 * \param session the handle
 * \param index the row: 0 to count - 1
 * \param path receives the file's full path; may be null to ask for the length
 * \param path_capacity capacity of `path` in units
 * \param path_needed receives the capacity in units that the path needs; may be null
 * \param name receives the file name alone; may be null to ask for the length
 * \param name_capacity capacity of `name` in units
 * \param name_needed receives the capacity in units that the name needs; may be null
 * \param row receives the record, all 20 bytes; not null
 * \return
 * - QS_OK: the record and both texts are filled;
 * - QS_INVALID_ARGUMENT: `session` or `row` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: at least one buffer is null or too small and is unchanged; the record,
 *   both lengths and the text that fits are stored;
 * - QS_FAILED: an internal failure; the record and the texts must not be used;
 * - QS_NOT_FOUND: `index` is not below the number of rows; nothing at all is stored, the lengths
 *   included.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_report_row(qs_session* session, uint64_t index, qs_char* path,
                                       uint64_t path_capacity, uint64_t* path_needed, qs_char* name,
                                       uint64_t name_capacity, uint64_t* name_needed,
                                       qs_session_row* row);

/* ---- Session clean ----------------------------------------------------------------------------*/

/**
 * Deletes the files of rows for good, in the order given, up to the first that cannot be deleted.
 *
 * Only a finished scan in a mode other than QS_SESSION_INSPECT can be cleaned; a cancelled one
 * cannot. Each file is deleted only while it is unchanged since the scan (convention 13). A row
 * that an earlier clean deleted is not refused but attempted again, which fails. Folders are never
 * removed. A refusal deletes nothing and leaves the clean's state as it was.
 *
 * \param session the handle
 * \param indexes array of `count` row indexes, none twice; may be null when `count` is 0
 * \param count number of rows; 0 is a clean that ends at once
 * \return the status that qs_session_poll_clean gives from then on, or a refusal:
 * - QS_OK: all files are deleted; the state is done;
 * - QS_INVALID_ARGUMENT: `session` is null, or `indexes` is null although `count` is not 0 (both
 *   are checked first), or an index is repeated; a refusal;
 * - QS_FAILED: a file could not be deleted, and the rows after it were not tried; the state is
 *   failed. Or an internal failure;
 * - QS_NOT_FOUND: an index is not below the number of rows; a refusal;
 * - QS_CANCELLED: the clean was cancelled between two files; the state is cancelled;
 * - QS_UNSUPPORTED: the scan is not done (idle, cancelled, failed), or its mode was
 *   QS_SESSION_INSPECT; a refusal;
 * - QS_BUSY: a scan, clean or destroy is in progress on the session; a refusal.
 *
 * Threads: any. Blocks until the clean ends.
 */
QS_API qs_status qs_session_start_clean(qs_session* session, const uint64_t* indexes,
                                        uint64_t count);

/**
 * Gives the state and the counters of the running or last clean.
 *
 * The members are read one after the other while the clean goes on.
 *
 * \param session the handle
 * \param status receives the record, all 28 bytes; not null
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `session` or `status` is null; nothing is stored;
 * - QS_FAILED: an internal failure; the record must not be used.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_poll_clean(qs_session* session, qs_session_clean_status* status);

/**
 * Asks the running clean to stop before the next file.
 *
 * It does not wait. Without a running clean it does nothing.
 *
 * \param session the handle
 * \return
 * - QS_OK: in every other case;
 * - QS_INVALID_ARGUMENT: `session` is null;
 * - QS_FAILED: an internal failure; the clean goes on.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_session_cancel_clean(qs_session* session);

/* ---- Product scan -----------------------------------------------------------------------------*/

/**
 * Makes a product scan: idle, with an empty report.
 *
 * \param scan_out receives the handle, to be freed by qs_product_scan_destroy; not null
 * \return
 * - QS_OK: the handle is stored;
 * - QS_INVALID_ARGUMENT: `scan_out` is null;
 * - QS_FAILED: an internal failure; `scan_out` is unchanged.
 *
 * Threads: any.
 */
QS_API qs_status qs_product_scan_create(qs_product_scan** scan_out);

/**
 * Frees a product scan with its report.
 *
 * The answer QS_BUSY leaves the handle as it was, so it can be destroyed later. See convention 5
 * for queries on other threads.
 *
 * \param scan the handle; invalid after QS_OK
 * \return
 * - QS_OK: the scan is gone;
 * - QS_INVALID_ARGUMENT: `scan` is null;
 * - QS_FAILED: an internal failure; the scan is still there;
 * - QS_BUSY: a scan, clean or destroy is in progress on the handle.
 *
 * Threads: any.
 */
QS_API qs_status qs_product_scan_destroy(qs_product_scan* scan);

/**
 * Runs a scan from start to end and leaves its report in the handle.
 *
 * The request is copied before the scan begins. A request that is refused leaves the earlier report
 * and state as they were; otherwise they are discarded, the state of an earlier clean included.
 * After a failure or a cancel the rows found so far can be read. Files that cannot be read, vanish
 * or are refused never fail a scan: they are left out.
 *
 * Large files and duplicates leave out the paging, swap and hibernation files and, if the request
 * says so, the protected folders. Junk scans report every file that the rules reach.
 *
 * A duplicate scan uses up to 16 threads of its own while it compares contents, and all of them end
 * before it does. It remembers what it learned about files for 72 hours in its hash cache
 * (convention 15), which it writes when it completes; without the cache it gives the same report,
 * later.
 *
 * \param scan the handle
 * \param request what to scan; not null. Not changed, and not kept
 * \return the status that qs_product_scan_poll gives from then on, or a refusal. The handle is
 * checked first, then whether it is in use, then the request.
 * - QS_OK: the scan is complete; its state is done;
 * - QS_INVALID_ARGUMENT, as a refusal: `scan` or `request` is null; the request's `size` is below
 *   56 or its `kind` unknown; `roots` is null although `root_count` is not 0; a root is null or
 *   empty; large files or duplicates without a root; `protect_system` without `user_home` or
 *   `system_root`;
 * - QS_INVALID_ARGUMENT, with the state failed: a junk scan without `user_home`, `system_root` or
 *   `rules_path`; a rule that lacks a path it needs, or whose path expands to an empty text;
 * - QS_FAILED: the rule document cannot be opened, read or parsed, has another root element than
 *   Root, or has a Category without a DisplayName; or an internal failure. The state is failed,
 *   unless memory ran out before the scan began, which changes nothing;
 * - QS_NOT_FOUND: the rule document does not exist (a missing folder on its path is QS_FAILED); the
 *   state is failed;
 * - QS_CANCELLED: the scan was cancelled, whatever else happened; its state is cancelled;
 * - QS_UNSUPPORTED: the library has no scan of this kind; the state is failed;
 * - QS_BUSY: a scan, clean or destroy is in progress on the handle; a refusal.
 *
 * Threads: any. Blocks until the scan ends.
 */
QS_API qs_status qs_product_scan_start(qs_product_scan* scan,
                                       const qs_product_scan_request* request);

/**
 * Asks the running scan to stop.
 *
 * It does not wait: qs_product_scan_start returns QS_CANCELLED soon after, on its own thread.
 * Without a running scan it does nothing; a cancel is never kept for a later scan.
 *
 * \param scan the handle
 * \return
 * - QS_OK: in every other case;
 * - QS_INVALID_ARGUMENT: `scan` is null;
 * - QS_FAILED: an internal failure; the scan goes on.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_cancel(qs_product_scan* scan);

/**
 * Gives the state and the counters of the running or last scan.
 *
 * \param scan the handle
 * \param status receives the record, all 48 bytes; not null
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `scan` or `status` is null; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_poll(qs_product_scan* scan, qs_product_scan_status* status);

/**
 * Gives the display name of the junk category that the scan walks.
 *
 * It is empty in the other kinds of scan and stays at the last category after the scan. Nested
 * categories and folders do not change it.
 *
 * \param scan the handle
 * \param out receives the name; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; may be null
 * \return
 * - QS_OK: the name is in `out`;
 * - QS_INVALID_ARGUMENT: `scan` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_current_group(qs_product_scan* scan, qs_char* out,
                                               uint64_t capacity, uint64_t* needed);

/**
 * Gives the path of the file that the scan works on.
 *
 * It changes at most once in 20 ms, is empty before the first file and stays after the scan.
 *
 * \param scan the handle
 * \param out receives the path; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; may be null
 * \return
 * - QS_OK: the path is in `out`;
 * - QS_INVALID_ARGUMENT: `scan` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_current_path(qs_product_scan* scan, qs_char* out,
                                              uint64_t capacity, uint64_t* needed);

/**
 * Gives the times and counters of the running or last scan.
 *
 * While a scan runs, `elapsed_us` and the counters of files, bytes, rows and items are live, and
 * the time of a stage appears when the stage ends.
 *
 * \param scan the handle
 * \param performance receives the record, all 192 bytes; not null. Its `size` is read first: the
 *   caller sets it to sizeof the record, and finds 192 there afterwards
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `scan` or `performance` is null, or its `size` is below 192; nothing is
 *   stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_get_performance(qs_product_scan* scan,
                                                 qs_product_scan_performance* performance);

/**
 * Gives the number of rows in the report, group headers included.
 *
 * \param scan the handle
 * \param count receives the number; it grows while a scan runs; not null
 * \return
 * - QS_OK: the number is stored;
 * - QS_INVALID_ARGUMENT: `scan` or `count` is null; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_report_count(qs_product_scan* scan, uint64_t* count);

/**
 * Gives a row of the report: four texts and its numbers.
 *
 * A row does not change once it is there, apart from its mark `deleted`. What the texts are:
 *
 * - large file: `path` and `name` of the file; `title` is "Archives", "Documents", "Images",
 *   "Media files" or "Other"; `location` is the folder, without a trailing separator. Rows come in
 *   the order found, without headers.
 * - duplicate: `path` and `name` of the file; `title` is the name of the first file of its set;
 *   `location` is a key that all files of the set have in common (qs_duplicate_hash_group_key).
 *   The rows of a set stand together, without a header.
 * - junk file: `path` and `name` of the file; `title` and `location` are both the display name of
 *   its group.
 * - header of a category: `title` is the display name; the other texts are empty. The header of a
 *   top-level category is there even if nothing was found.
 * - header of a folder's group: `title` is the display name of the group, `path` and `location` are
 *   the folder, `name` is empty. It stands before the first file of the group; a folder without
 *   files has no header.
 *
 * \param scan the handle
 * \param index the row: 0 to count - 1
 * \param path receives the path; may be null to ask for the length
 * \param path_capacity capacity of `path` in units
 * \param path_needed receives the capacity in units that the path needs; may be null
 * \param name receives the name; may be null to ask for the length
 * \param name_capacity capacity of `name` in units
 * \param name_needed receives the capacity in units that the name needs; may be null
 * \param title receives the title; may be null to ask for the length
 * \param title_capacity capacity of `title` in units
 * \param title_needed receives the capacity in units that the title needs; may be null
 * \param location receives the location; may be null to ask for the length
 * \param location_capacity capacity of `location` in units
 * \param location_needed receives the capacity in units that the location needs; may be null
 * \param row receives the record, all 56 bytes; not null
 * \return
 * - QS_OK: the record and all texts are filled;
 * - QS_INVALID_ARGUMENT: `scan` or `row` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: at least one buffer is null or too small and is unchanged; the record, all
 *   lengths and the texts that fit are stored;
 * - QS_FAILED: an internal failure; nothing is stored;
 * - QS_NOT_FOUND: `index` is not below the number of rows; nothing at all is stored, the lengths
 *   included.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_report_row(qs_product_scan* scan, uint64_t index, qs_char* path,
                                            uint64_t path_capacity, uint64_t* path_needed,
                                            qs_char* name, uint64_t name_capacity,
                                            uint64_t* name_needed, qs_char* title,
                                            uint64_t title_capacity, uint64_t* title_needed,
                                            qs_char* location, uint64_t location_capacity,
                                            uint64_t* location_needed, qs_product_scan_row* row);

/**
 * Gives the group that contains the group of a row.
 *
 * It is 0 at the top level, and so for every large file and duplicate. For a junk row it is the id
 * of the group around the row's own group, with one exception: the files directly in the StartPath
 * of a ChildrenList in a nested category give that category itself, which is their `group_id`.
 *
 * \param scan the handle
 * \param index the row: 0 to count - 1
 * \param parent_group_id receives the id of the containing group; not null
 * \return
 * - QS_OK: the id is stored;
 * - QS_INVALID_ARGUMENT: `scan` or `parent_group_id` is null; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored;
 * - QS_NOT_FOUND: `index` is not below the number of rows; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_report_row_parent_group_id(qs_product_scan* scan, uint64_t index,
                                                            uint64_t* parent_group_id);

/* ---- Product clean ----------------------------------------------------------------------------*/

/**
 * Deletes the files of findings for good and counts what succeeded and failed.
 *
 * The last scan must be done or cancelled. The whole request is checked first and refused as a
 * whole. Then each file is deleted only while it is unchanged since the scan (convention 13); a
 * file that cannot be deleted is counted, and the clean goes on. Files go in the order given; those
 * of a junk scan go longest path first, and after each of them its folder is removed as well if
 * qs_empty_directory_eligible accepts it. Nothing goes to the Recycle Bin. The report stays as it
 * is apart from the `deleted` marks, so another clean may name other rows. At least one file of
 * every set of duplicates always stays; a row whose name ends in a dot or a blank is no such copy
 * (convention 13).
 *
 * \param scan the handle
 * \param item_ids array of `count` ids of items, none twice; may be null when `count` is 0
 * \param count number of ids; 0 is a clean that ends at once
 * \return the status that qs_product_scan_poll_clean gives from then on, or a refusal, which
 * deletes nothing and leaves the clean's state as it was:
 * - QS_OK: the clean is complete and deleted at least one file, or had none to delete; the state is
 *   done. Some files may have failed: see qs_product_scan_poll_clean_detailed;
 * - QS_INVALID_ARGUMENT: `scan` is null, or `item_ids` is null although `count` is not 0 (both are
 *   checked first); an id is unknown, belongs to a header, is repeated or was deleted by an earlier
 *   clean; or the ids name every file that is left of a set of duplicates; a refusal;
 * - QS_FAILED: no file could be deleted; the state is failed. Or an internal failure;
 * - QS_CANCELLED: the clean was cancelled; the state is cancelled;
 * - QS_UNSUPPORTED: no scan was made yet, or the last one failed; a refusal;
 * - QS_BUSY: a scan, clean or destroy is in progress on the handle; a refusal.
 *
 * Threads: any. Blocks until the clean ends.
 */
QS_API qs_status qs_product_scan_start_clean(qs_product_scan* scan, const uint64_t* item_ids,
                                             uint64_t count);

/**
 * Gives the state and the progress of the running or last clean.
 *
 * \param scan the handle
 * \param status receives the record, all 32 bytes; not null
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `scan` or `status` is null; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_poll_clean(qs_product_scan* scan, qs_product_clean_status* status);

/**
 * Gives the state of the running or last clean, with files deleted, files failed and bytes freed.
 *
 * \param scan the handle
 * \param detail receives the record, all 56 bytes; not null. Its `size` is read first: the caller
 *   sets it to sizeof the record, and finds 56 there afterwards
 * \return
 * - QS_OK: the record is filled;
 * - QS_INVALID_ARGUMENT: `scan` or `detail` is null, or its `size` is below 56; nothing is stored;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_poll_clean_detailed(qs_product_scan* scan,
                                                     qs_product_clean_detail* detail);

/**
 * Asks the running clean to stop before the next file.
 *
 * It does not wait. Without a running clean it does nothing.
 *
 * \param scan the handle
 * \return
 * - QS_OK: in every other case;
 * - QS_INVALID_ARGUMENT: `scan` is null;
 * - QS_FAILED: an internal failure; the clean goes on.
 *
 * Threads: any, also during a scan or clean.
 */
QS_API qs_status qs_product_scan_cancel_clean(qs_product_scan* scan);

/* ---- Large files ------------------------------------------------------------------------------*/

/**
 * Tells whether the large-file scan would report a file.
 *
 * That is: its size is more than 10485760 bytes, it is no paging, swap or hibernation file
 * (qs_is_ignored), and it is not protected if protection is asked for (convention 14). The file
 * itself is not looked at.
 *
 * \param path the file; null gives 0
 * \param size its size in bytes
 * \param protect_system 0, or anything else to leave out the protected folders, which is done only
 *   if both of the next two arguments are given
 * \param system_root root of the system drive; null switches the protection off
 * \param user_home the profile folder; null switches the protection off
 * \return 1 when it would be reported, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_large_scan_include(const qs_char* path, int64_t size, uint32_t protect_system,
                                     const qs_char* system_root, const qs_char* user_home);

/**
 * Gives the class of a file by its extension.
 *
 * The extension is the text from the last dot of the last component on, compared without regard to
 * case: "a.tar.gz" has ".gz".
 *
 * \param path a path or a file name; null gives QS_LARGE_OTHER
 * \return QS_LARGE_...; QS_LARGE_OTHER for an unknown extension and for none.
 *
 * Threads: any.
 */
QS_API uint32_t qs_large_file_classify(const qs_char* path);

/**
 * Tells whether a size counts as large: more than 10485760 bytes (10 MiB).
 *
 * \param size size in bytes
 * \return 1 when it does, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_large_file_included(int64_t size);

/**
 * Gives the word under which summaries count a size.
 *
 * Its limits are 500 MiB and 1 GiB, unlike the 512 MiB of qs_matches_size, and the limits
 * themselves are in no bucket.
 *
 * \param size size in bytes
 * \return a static text of type char, not to be freed: "Huge" above 1073741824 bytes, "Medium" from
 * 524288001 to 1073741823, "Small" below 524288000 (negative sizes too), "None" for exactly
 * 524288000 and exactly 1073741824.
 *
 * Threads: any.
 */
QS_API const char* qs_summary_bucket(int64_t size);

/* ---- Junk rules -------------------------------------------------------------------------------*/

/**
 * Gives the path that a Path or StartPath of a rule document stands for.
 *
 * First every {UserHome} is replaced, then in the result every {Root}, both case-sensitively. So a
 * {Root} inside `user_home` is replaced as well. Nothing else changes: no separator is added, and
 * the result is not checked.
 *
 * \param rule_path the text from the rule document; may be empty, not null
 * \param user_home replaces {UserHome}; may be empty, not null
 * \param system_root replaces {Root}; may be empty, not null
 * \param out receives the result; may be null to ask for the length
 * \param capacity capacity of `out` in units
 * \param needed receives the needed capacity in units; may be null
 * \return
 * - QS_OK: the result is in `out`;
 * - QS_INVALID_ARGUMENT: one of the three texts is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_expand_junk_path(const qs_char* rule_path, const qs_char* user_home,
                                     const qs_char* system_root, qs_char* out, uint64_t capacity,
                                     uint64_t* needed);

/**
 * Tells whether a folder may be offered for removal as empty.
 *
 * Empty means that there is no file in it or below it, at any depth; folders do not count, reparse
 * points that are folders are not entered, and a subfolder that cannot be listed counts as empty.
 * A folder called Downloads, without regard to case, is never eligible. Note that
 * qs_delete_permanently removes a folder only if it holds no folders either.
 *
 * \param path the folder, with or without trailing separators; null and empty give 0
 * \return 1 when eligible; 0 when it is not, is no folder, is a reparse point or cannot be queried.
 *
 * Threads: any. Blocks while it looks through the tree, up to the first file.
 */
QS_API int32_t qs_empty_directory_eligible(const qs_char* path);

/* ---- Hashing ----------------------------------------------------------------------------------*/

/*
 * A hash is XXH32 with seed 0, written as 8 lower-case hexadecimal digits and a NUL, the least
 * significant byte first: the value 0x12345678 is "78563412", the hash of no bytes "055dcc02". This
 * is not the order in which most tools print it.
 */

/**
 * Gives the hash of a file's whole content.
 *
 * The same as qs_xxhash32_file_cancelable without a cancel flag.
 *
 * \param path the file; not null
 * \param out receives 8 digits and a NUL; not null
 * \param capacity capacity of `out` in chars; at least 9
 * \return
 * - QS_OK: the hash is in `out`;
 * - QS_INVALID_ARGUMENT: `path` is null (checked first); `out` is unchanged;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is below 9; `out` is unchanged;
 * - QS_FAILED: the file cannot be opened or read, or an internal failure; `out` is unchanged.
 *
 * Threads: any. Blocks while it reads.
 */
QS_API qs_status qs_xxhash32_file(const qs_char* path, char* out, uint64_t capacity);

/**
 * Gives the hash of a file's whole content and can be cancelled.
 *
 * Others may write and delete the file meanwhile; the hash covers what the reads deliver until the
 * end of the file. A thread that calls it keeps a read buffer of 1 MiB until it ends.
 *
 * \param path the file; not null
 * \param out receives 8 digits and a NUL; not null
 * \param capacity capacity of `out` in chars; at least 9
 * \param cancel cancel flag (convention 9), read before and after each read of 1 MiB; may be null
 * \return
 * - QS_OK: the hash is in `out`;
 * - QS_INVALID_ARGUMENT: `path` is null (checked first); `out` is unchanged;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is below 9; `out` is unchanged;
 * - QS_FAILED: the file cannot be opened or read, or an internal failure; `out` is unchanged;
 * - QS_CANCELLED: the cancel flag was set; `out` is unchanged.
 *
 * Threads: any. Blocks while it reads.
 */
QS_API qs_status qs_xxhash32_file_cancelable(const qs_char* path, char* out, uint64_t capacity,
                                             uint32_t* cancel);

/**
 * Gives the hash of bytes in memory.
 *
 * \param data the bytes; may be null when `byte_count` is 0
 * \param byte_count number of bytes; 0 gives the hash of no bytes
 * \param out receives 8 digits and a NUL; not null
 * \param capacity capacity of `out` in chars; at least 9
 * \return
 * - QS_OK: the hash is in `out`;
 * - QS_INVALID_ARGUMENT: `data` is null although `byte_count` is not 0; `out` is unchanged;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is below 9 (checked first); `out` is
 *   unchanged.
 *
 * Threads: any.
 */
QS_API qs_status qs_xxhash32_hex(const void* data, uint64_t byte_count, char* out,
                                 uint64_t capacity);

/* ---- Samples and keys of duplicates -----------------------------------------------------------*/

/**
 * Gives a cheap sample of a file's content: 150 bytes of it as hexadecimal digits.
 *
 * With a size of up to 150 bytes these are the first 150 bytes. With more they are three pieces of
 * 50 bytes: the first, those from size / 2 - 25 on, and the last. Bytes that the file does not have
 * are 0. The size is taken from the caller and not measured.
 *
 * \param path the file; not null
 * \param size its size in bytes, as reported; not negative
 * \param out receives 300 lower-case digits and a NUL; not null
 * \param capacity capacity of `out` in chars; at least 301
 * \return
 * - QS_OK: the sample is in `out`;
 * - QS_INVALID_ARGUMENT: `path` is null (checked first), or `size` is negative (checked last);
 *   `out` is unchanged;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is below 301; `out` is unchanged;
 * - QS_FAILED: the file cannot be opened, positioned or read, or an internal failure; `out` is
 *   unchanged.
 *
 * Threads: any. Blocks while it reads.
 */
QS_API qs_status qs_duplicate_sample_hex(const qs_char* path, int64_t size, char* out,
                                         uint64_t capacity);

/**
 * Gives the key of a size and a sample: the decimal size, a space, the sample.
 *
 * Files with different keys differ. The duplicate scan builds its keys in the same way, with the
 * sample of qs_duplicate_sample_hex for files of up to 150 bytes and, for larger ones, with the
 * hash of the first 4096 bytes, "|", and the hash of the last 4096 bytes (the hash of the whole
 * file twice when it has no more than 4096).
 *
 * \param size size in bytes; a negative one is written with "-"
 * \param sample the sample, ASCII; may be empty, not null
 * \param out receives the key; may be null to ask for the length
 * \param capacity capacity of `out` in chars
 * \param needed receives the needed capacity in chars; may be null
 * \return
 * - QS_OK: the key is in `out`;
 * - QS_INVALID_ARGUMENT: `sample` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_duplicate_sample_group_key(int64_t size, const char* sample, char* out,
                                               uint64_t capacity, uint64_t* needed);

/**
 * Gives the key of a set of duplicates: the sample group key, a space, the full hash.
 *
 * The duplicate scan takes files with equal keys for duplicates. Files of up to 150 bytes have no
 * full hash: their sample holds the whole content, and the sample group key is the key of the set.
 * A 32-bit hash is no proof; compare the files byte by byte before deleting what matters.
 *
 * \param sample_group_key the key that qs_duplicate_sample_group_key gave, ASCII; not null
 * \param full_hash the hash that qs_xxhash32_file gave, ASCII; may be empty, not null
 * \param out receives the key; may be null to ask for the length
 * \param capacity capacity of `out` in chars
 * \param needed receives the needed capacity in chars; may be null
 * \return
 * - QS_OK: the key is in `out`;
 * - QS_INVALID_ARGUMENT: `sample_group_key` or `full_hash` is null; nothing is stored;
 * - QS_BUFFER_TOO_SMALL: `out` is null or `capacity` is too small; `needed` is stored, `out` is
 *   unchanged;
 * - QS_FAILED: an internal failure; nothing is stored.
 *
 * Threads: any.
 */
QS_API qs_status qs_duplicate_hash_group_key(const char* sample_group_key, const char* full_hash,
                                             char* out, uint64_t capacity, uint64_t* needed);

/**
 * Tells whether the duplicate scan would consider a file.
 *
 * That is: it is no paging, swap or hibernation file (qs_is_ignored), and it is not protected if
 * protection is asked for (convention 14). The file itself is not looked at.
 *
 * \param path the file; null gives 0
 * \param protect_system 0, or anything else to leave out the protected folders, which is done only
 *   if both of the next two arguments are given
 * \param system_root root of the system drive; null switches the protection off
 * \param user_home the profile folder; null switches the protection off
 * \return 1 when it would be considered, else 0.
 *
 * Threads: any.
 */
QS_API int32_t qs_duplicate_scan_include(const qs_char* path, uint32_t protect_system,
                                         const qs_char* system_root, const qs_char* user_home);

#ifdef __cplusplus
}
#endif

#endif
