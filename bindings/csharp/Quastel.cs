// quastel_core.dll for C#: all of its functions and records as they are (Native), and small classes
// around them (ProductScan, Session, Files, Library). One file, to be added to a 64-bit project.
// quastel_core.h is the reference for what each function does; names here are the same in C#'s
// spelling.

using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using System.Threading.Tasks;
using Microsoft.Win32.SafeHandles;

namespace Quastel {

#region Constants

/// <summary>The answer of most functions (QS_...).</summary>
public enum Status : uint {
  /// <summary>Success.</summary>
  Ok = 0,
  /// <summary>An argument is missing or not allowed.</summary>
  InvalidArgument = 1,
  /// <summary>A text buffer is null or too short.</summary>
  BufferTooSmall = 2,
  /// <summary>An internal failure, an unreadable file, or a clean whose deletions failed.</summary>
  Failed = 3,
  /// <summary>No row has this index, or the rule document does not exist.</summary>
  NotFound = 4,
  /// <summary>The operation stopped because a cancel was requested.</summary>
  Cancelled = 5,
  /// <summary>There is no such scan, or no scan result that could be cleaned.</summary>
  Unsupported = 6,
  /// <summary>A start, clean or destroy is already in progress on the handle.</summary>
  Busy = 7
}

/// <summary>What a product scan looks for (QS_SCAN_KIND_...).</summary>
public enum ScanKind : uint {
  /// <summary>Files in the folders that a rule document names.</summary>
  JunkRules = 0,
  /// <summary>Files of more than 10 MiB.</summary>
  LargeFiles = 1,
  /// <summary>Sets of two or more files with equal content.</summary>
  Duplicates = 2
}

/// <summary>State of a scan or clean (QS_STATE_...).</summary>
public enum WorkState : uint {
  /// <summary>None was started yet.</summary>
  Idle = 0,
  /// <summary>At work.</summary>
  Running = 1,
  /// <summary>Ended with success.</summary>
  Done = 2,
  /// <summary>Ended by a cancel.</summary>
  Cancelled = 3,
  /// <summary>Ended with any other status.</summary>
  Failed = 4
}

/// <summary>What a row of a report is (QS_ROW_...).</summary>
public enum RowKind : uint {
  /// <summary>A junk file.</summary>
  Junk = 0,
  /// <summary>A large file.</summary>
  LargeFile = 1,
  /// <summary>One file of a set of duplicates.</summary>
  Duplicate = 2,
  /// <summary>The header of a group of junk files; it cannot be cleaned.</summary>
  Group = 3
}

/// <summary>The class of a large file (QS_LARGE_...).</summary>
public enum LargeClass : uint {
  /// <summary>Such as .zip and .iso.</summary>
  Archives = 0,
  /// <summary>Such as .docx and .pdf.</summary>
  Documents = 1,
  /// <summary>Such as .jpg and .psd.</summary>
  Images = 2,
  /// <summary>Sound and film.</summary>
  Media = 3,
  /// <summary>Every other extension, and none.</summary>
  Other = 4
}

/// <summary>What a session keeps (QS_SESSION_...).</summary>
public enum SessionMode : uint {
  /// <summary>Every file.</summary>
  AllFiles = 0,
  /// <summary>The files of more than 10 MiB.</summary>
  LargeFiles = 1,
  /// <summary>Every file, but a clean is refused.</summary>
  Inspect = 2
}

#endregion

#region Records

/// <summary>What qs_session_poll_scan fills; 36 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 4, Size = 36)]
public struct SessionScanStatus {
  /// <summary>Of the running or the last scan.</summary>
  [FieldOffset(0)] public WorkState State;
  /// <summary>0.</summary>
  [FieldOffset(4)] public uint Reserved;
  /// <summary>Files seen so far, kept or not.</summary>
  [FieldOffset(8)] public ulong FilesVisited;
  /// <summary>Bytes in the files seen so far.</summary>
  [FieldOffset(16)] public ulong BytesVisited;
  /// <summary>Rows in the report so far.</summary>
  [FieldOffset(24)] public ulong RowCount;
  /// <summary>Status of the last finished scan.</summary>
  [FieldOffset(32)] public Status Status;
}

/// <summary>The numbers of a session's row; 20 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 4, Size = 20)]
public struct SessionRow {
  /// <summary>The file's size in bytes.</summary>
  [FieldOffset(0)] public ulong Size;
  /// <summary>Last-write time in ticks of local time; see Library.TimeOf.</summary>
  [FieldOffset(8)] public ulong Modified;
  /// <summary>1 once a clean has deleted the file.</summary>
  [FieldOffset(16)] public uint Deleted;
}

/// <summary>What qs_session_poll_clean fills; 28 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 4, Size = 28)]
public struct SessionCleanStatus {
  /// <summary>Of the running or the last clean.</summary>
  [FieldOffset(0)] public WorkState State;
  /// <summary>0.</summary>
  [FieldOffset(4)] public uint Reserved;
  /// <summary>Rows that the clean was asked to delete.</summary>
  [FieldOffset(8)] public ulong Requested;
  /// <summary>Files deleted so far.</summary>
  [FieldOffset(16)] public ulong Processed;
  /// <summary>Status of the last finished clean.</summary>
  [FieldOffset(24)] public Status Status;
}

/// <summary>What a product scan is asked to do; 56 bytes. ScanOptions fills it.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 56)]
public struct ProductScanRequest {
  /// <summary>56.</summary>
  [FieldOffset(0)] public uint Size;
  /// <summary>What to look for.</summary>
  [FieldOffset(4)] public ScanKind Kind;
  /// <summary>Array of pointers to texts.</summary>
  [FieldOffset(8)] public IntPtr Roots;
  /// <summary>Number of roots.</summary>
  [FieldOffset(16)] public ulong RootCount;
  /// <summary>The user's profile folder.</summary>
  [FieldOffset(24)] public IntPtr UserHome;
  /// <summary>The root of the system drive.</summary>
  [FieldOffset(32)] public IntPtr SystemRoot;
  /// <summary>Anything but 0 keeps out of the protected folders.</summary>
  [FieldOffset(40)] public uint ProtectSystem;
  /// <summary>Not read.</summary>
  [FieldOffset(44)] public uint Reserved;
  /// <summary>Path of the rule document.</summary>
  [FieldOffset(48)] public IntPtr RulesPath;
}

/// <summary>The numbers of a product scan's row; 56 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 56)]
public struct ProductScanRow {
  /// <summary>Names the finding in a clean; Native.NoItemId for headers.</summary>
  [FieldOffset(0)] public ulong ItemId;
  /// <summary>The group; a header has its own id here.</summary>
  [FieldOffset(8)] public ulong GroupId;
  /// <summary>What the row is.</summary>
  [FieldOffset(16)] public RowKind Kind;
  /// <summary>0.</summary>
  [FieldOffset(20)] public uint Reserved;
  /// <summary>The file's size in bytes; 0 for headers.</summary>
  [FieldOffset(24)] public long Size;
  /// <summary>Last-write time in ticks of local time; 0 for headers.</summary>
  [FieldOffset(32)] public ulong Modified;
  /// <summary>1 when the row may be named in a clean.</summary>
  [FieldOffset(40)] public uint Deletable;
  /// <summary>1 when the row should be offered as already selected.</summary>
  [FieldOffset(44)] public uint Preselect;
  /// <summary>1 once a clean has deleted the file.</summary>
  [FieldOffset(48)] public uint Deleted;
  /// <summary>The class of a large file; Other for every other row.</summary>
  [FieldOffset(52)] public LargeClass LargeClass;
}

/// <summary>What qs_product_scan_poll fills; 48 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 48)]
public struct ProductScanStatus {
  /// <summary>Of the running or the last scan.</summary>
  [FieldOffset(0)] public WorkState State;
  /// <summary>1 once a duplicate scan compares contents.</summary>
  [FieldOffset(4)] public uint PathPublished;
  /// <summary>Files seen so far, reported or not.</summary>
  [FieldOffset(8)] public ulong FilesVisited;
  /// <summary>Bytes in the files seen so far.</summary>
  [FieldOffset(16)] public ulong BytesVisited;
  /// <summary>Bytes in the items of the report so far.</summary>
  [FieldOffset(24)] public ulong TotalBytes;
  /// <summary>Items in the report so far, headers not counted.</summary>
  [FieldOffset(32)] public ulong ItemCount;
  /// <summary>Status of the last finished scan.</summary>
  [FieldOffset(40)] public Status Status;
  /// <summary>0.</summary>
  [FieldOffset(44)] public uint Reserved;
}

/// <summary>Times in microseconds and counters of a scan; 192 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 192)]
public struct ProductScanPerformance {
  /// <summary>192, set by the caller.</summary>
  [FieldOffset(0)] public uint Size;
  /// <summary>Kind of the running or last scan.</summary>
  [FieldOffset(4)] public ScanKind Kind;
  /// <summary>Since the start of the scan; the whole time once it has ended.</summary>
  [FieldOffset(8)] public ulong ElapsedUs;
  /// <summary>Removing the roots that lie in other roots.</summary>
  [FieldOffset(16)] public ulong FilterRootsUs;
  /// <summary>Loading the rule document.</summary>
  [FieldOffset(24)] public ulong LoadRulesUs;
  /// <summary>Walking the folders.</summary>
  [FieldOffset(32)] public ulong WalkUs;
  /// <summary>Grouping the candidates by size.</summary>
  [FieldOffset(40)] public ulong GroupBySizeUs;
  /// <summary>Sampling files.</summary>
  [FieldOffset(48)] public ulong SampleUs;
  /// <summary>Grouping by sample.</summary>
  [FieldOffset(56)] public ulong SampleKeysUs;
  /// <summary>Choosing the files to hash in full.</summary>
  [FieldOffset(64)] public ulong PlanHashesUs;
  /// <summary>Hashing files in full.</summary>
  [FieldOffset(72)] public ulong HashUs;
  /// <summary>Grouping by hash.</summary>
  [FieldOffset(80)] public ulong GroupByHashUs;
  /// <summary>Files seen.</summary>
  [FieldOffset(88)] public ulong FilesVisited;
  /// <summary>Bytes in the files seen.</summary>
  [FieldOffset(96)] public ulong BytesVisited;
  /// <summary>Files that may have a duplicate.</summary>
  [FieldOffset(104)] public ulong Candidates;
  /// <summary>Files with a sample.</summary>
  [FieldOffset(112)] public ulong SampledItems;
  /// <summary>Files with a full hash.</summary>
  [FieldOffset(120)] public ulong HashedItems;
  /// <summary>Sets found without full hashes.</summary>
  [FieldOffset(128)] public ulong UnhashedGroups;
  /// <summary>Rows in the report, headers included.</summary>
  [FieldOffset(136)] public ulong RowCount;
  /// <summary>Items in the report, headers not counted.</summary>
  [FieldOffset(144)] public ulong ItemCount;
  /// <summary>Status of the last finished scan.</summary>
  [FieldOffset(152)] public Status Status;
  /// <summary>The first of nine reserved numbers; all are 0.</summary>
  [FieldOffset(156)] public uint Reserved;
}

/// <summary>What qs_product_scan_poll_clean fills; 32 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 32)]
public struct ProductCleanStatus {
  /// <summary>Of the running or last clean of this report.</summary>
  [FieldOffset(0)] public WorkState State;
  /// <summary>0.</summary>
  [FieldOffset(4)] public uint Reserved;
  /// <summary>Items that the clean was asked to delete.</summary>
  [FieldOffset(8)] public ulong Requested;
  /// <summary>Items attempted so far, deleted or failed.</summary>
  [FieldOffset(16)] public ulong Processed;
  /// <summary>Status of the last finished clean.</summary>
  [FieldOffset(24)] public Status Status;
  /// <summary>0.</summary>
  [FieldOffset(28)] public uint Reserved2;
}

/// <summary>What qs_product_scan_poll_clean_detailed fills; 56 bytes.</summary>
[StructLayout(LayoutKind.Explicit, Pack = 8, Size = 56)]
public struct ProductCleanDetail {
  /// <summary>56, set by the caller.</summary>
  [FieldOffset(0)] public uint Size;
  /// <summary>Of the running or last clean of this report.</summary>
  [FieldOffset(4)] public WorkState State;
  /// <summary>Items that the clean was asked to delete.</summary>
  [FieldOffset(8)] public ulong Requested;
  /// <summary>Items attempted so far.</summary>
  [FieldOffset(16)] public ulong Processed;
  /// <summary>Files deleted so far.</summary>
  [FieldOffset(24)] public ulong Deleted;
  /// <summary>Files left alone so far: changed, missing, locked, or not permitted.</summary>
  [FieldOffset(32)] public ulong Failed;
  /// <summary>Bytes in the files deleted so far.</summary>
  [FieldOffset(40)] public ulong BytesFreed;
  /// <summary>Status of the last finished clean.</summary>
  [FieldOffset(48)] public Status Status;
  /// <summary>0.</summary>
  [FieldOffset(52)] public uint Reserved;
}

#endregion

#region Handles and callbacks

/// <summary>Owns a session; freed once no call uses it any more.</summary>
public sealed class SessionHandle : SafeHandleZeroOrMinusOneIsInvalid {
  private SessionHandle() : base(true) {}

  /// <summary>Called by the runtime.</summary>
  protected override bool ReleaseHandle() { return Native.SessionDestroy(handle) == Status.Ok; }
}

/// <summary>Owns a product scan; freed once no call uses it any more.</summary>
public sealed class ProductScanHandle : SafeHandleZeroOrMinusOneIsInvalid {
  private ProductScanHandle() : base(true) {}

  /// <summary>Called by the runtime.</summary>
  protected override bool ReleaseHandle() { return Native.ProductScanDestroy(handle) == Status.Ok; }
}

/// <summary>Receives one file of an enumeration. No exception may leave it; see Files.</summary>
[UnmanagedFunctionPointer(CallingConvention.Cdecl, CharSet = CharSet.Unicode)]
public delegate void FileCallback(IntPtr user, string path, ulong size, ulong lastWrite,
                                  string name);

/// <summary>Receives one subfolder. No exception may leave it; see Files.</summary>
[UnmanagedFunctionPointer(CallingConvention.Cdecl, CharSet = CharSet.Unicode)]
public delegate void DirectoryCallback(IntPtr user, string path);

#endregion

#region Functions

/// <summary>The functions of the DLL, one for one, in the order of quastel_core.h.</summary>
/// <remarks>
/// Buffers are arrays whose capacity is given beside them; null asks for the length alone. Cancel
/// flags are addresses, IntPtr.Zero for none; see CancelFlag.
/// </remarks>
public static class Native {
  private const string Dll = "quastel_core.dll";
  private const CallingConvention Cdecl = CallingConvention.Cdecl;
  // Nowhere else: not in the current folder, and not along PATH, where others may write.
  private const DllImportSearchPath Places =
      DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32;

  /// <summary>The item id of every group header (QS_NO_ITEM_ID).</summary>
  public const ulong NoItemId = ulong.MaxValue;

  /// <summary>Gives the version as a static ASCII text; see Library.Version.</summary>
  [DllImport(Dll, EntryPoint = "qs_version",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern IntPtr Version();

  /// <summary>Gives the form in which the library hands a path to the system.</summary>
  [DllImport(Dll, EntryPoint = "qs_normalize_path",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status NormalizePath(string path, [Out] char[] output, ulong capacity,
                                            out ulong needed);

  /// <summary>Gives the path of something named relative to a folder.</summary>
  [DllImport(Dll, EntryPoint = "qs_path_combine",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status PathCombine(string basePath, string relative, [Out] char[] output,
                                          ulong capacity, out ulong needed);

  /// <summary>Tells whether a text occurs in another one.</summary>
  [DllImport(Dll, EntryPoint = "qs_path_contains",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool PathContains(string haystack, string needle);

  /// <summary>Tells whether two paths have the same parent folder.</summary>
  [DllImport(Dll, EntryPoint = "qs_is_in_same_directory",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool IsInSameDirectory(string a, string b);

  /// <summary>Tells whether a path is a folder that the library would enter.</summary>
  [DllImport(Dll, EntryPoint = "qs_directory_exists",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool DirectoryExists(string path);

  /// <summary>Reports the files of a folder through a callback; see Files.Enumerate.</summary>
  [DllImport(Dll, EntryPoint = "qs_enumerate_files",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status EnumerateFiles(string root, string pattern, uint recursive,
                                             FileCallback callback, IntPtr user, IntPtr cancel);

  /// <summary>Reports the files of a folder and can keep out of protected folders.</summary>
  [DllImport(Dll, EntryPoint = "qs_enumerate_files_ex",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status EnumerateFilesEx(string root, string pattern, uint recursive,
                                               uint protectSystem, string systemRoot,
                                               string userHome, FileCallback callback, IntPtr user,
                                               IntPtr cancel);

  /// <summary>Reports the direct subfolders of a folder; see Files.Subfolders.</summary>
  [DllImport(Dll, EntryPoint = "qs_enumerate_directories",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status EnumerateDirectories(string root, DirectoryCallback callback,
      IntPtr user, IntPtr cancel);

  /// <summary>Tells whether a path names a paging, swap or hibernation file.</summary>
  [DllImport(Dll, EntryPoint = "qs_is_ignored",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool IsIgnored(string path);

  /// <summary>Tells whether a path is a protected folder or lies in one.</summary>
  [DllImport(Dll, EntryPoint = "qs_is_in_whitelist",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool IsInWhitelist(string path, string systemRoot, string userHome);

  /// <summary>Reduces a list of folders to those that do not lie in another one of it.</summary>
  [DllImport(Dll, EntryPoint = "qs_filter_dir",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status FilterDir(
      [MarshalAs(UnmanagedType.LPArray, ArraySubType = UnmanagedType.LPWStr)] string[] paths,
      ulong count, [Out] char[] output, ulong capacity, out ulong keptCount, out ulong needed);

  /// <summary>Tells whether a size belongs to a size class.</summary>
  [DllImport(Dll, EntryPoint = "qs_matches_size",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool MatchesSize(long size, uint mode);

  /// <summary>Tells whether a file time belongs to an age class.</summary>
  [DllImport(Dll, EntryPoint = "qs_matches_date",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool MatchesDate(long fileTime, long now, int mode);

  /// <summary>Deletes a file, or an empty folder, for good.</summary>
  [DllImport(Dll, EntryPoint = "qs_delete_permanently",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool DeletePermanently(string path);

  /// <summary>Moves a file to the Recycle Bin, or deletes an empty folder for good.</summary>
  [DllImport(Dll, EntryPoint = "qs_move_to_recycle_bin",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool MoveToRecycleBin(string path);

  /// <summary>Tells whether a file still is what a scan saw.</summary>
  [DllImport(Dll, EntryPoint = "qs_file_matches_snapshot",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool FileMatchesSnapshot(string path, long size, long lastWrite);

  /// <summary>Deletes a file for good if it still is what a scan saw.</summary>
  [DllImport(Dll, EntryPoint = "qs_delete_snapshot_permanently",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool DeleteSnapshotPermanently(string path, long size, long lastWrite);

  /// <summary>Moves a file to the Recycle Bin if it still is what a scan saw.</summary>
  [DllImport(Dll, EntryPoint = "qs_move_snapshot_to_recycle_bin",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool MoveSnapshotToRecycleBin(string path, long size, long lastWrite);

  /// <summary>Makes a session.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_create",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionCreate(out SessionHandle sessionOut);

  /// <summary>Frees a session; SessionHandle calls it.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_destroy",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionDestroy(IntPtr session);

  /// <summary>Walks a folder and keeps a row for each file. Blocks until the scan ends.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_start_scan",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionStartScan(SessionHandle session, string root,
                                               SessionMode mode);

  /// <summary>Gives the state and the counters of the running or last scan.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_poll_scan",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionPollScan(SessionHandle session, out SessionScanStatus status);

  /// <summary>Asks the running scan to stop.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_cancel_scan",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionCancelScan(SessionHandle session);

  /// <summary>Gives the path of the file that the scan saw last.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_scan_current_path",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionScanCurrentPath(SessionHandle session, [Out] char[] output,
      ulong capacity, out ulong needed);

  /// <summary>Gives the number of rows.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_report_count",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionReportCount(SessionHandle session, out ulong count);

  /// <summary>Gives a row: path and name of a file with its numbers.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_report_row",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionReportRow(SessionHandle session, ulong index,
                                               [Out] char[] path, ulong pathCapacity,
                                               out ulong pathNeeded, [Out] char[] name,
                                               ulong nameCapacity, out ulong nameNeeded,
                                               out SessionRow row);

  /// <summary>Deletes the files of rows up to the first that cannot be. Blocks.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_start_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionStartClean(SessionHandle session, ulong[] indexes,
                                                ulong count);

  /// <summary>Gives the state and the counters of the running or last clean.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_poll_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionPollClean(SessionHandle session,
                                               out SessionCleanStatus status);

  /// <summary>Asks the running clean to stop before the next file.</summary>
  [DllImport(Dll, EntryPoint = "qs_session_cancel_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status SessionCancelClean(SessionHandle session);

  /// <summary>Makes a product scan.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_create",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanCreate(out ProductScanHandle scanOut);

  /// <summary>Frees a product scan; ProductScanHandle calls it.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_destroy",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanDestroy(IntPtr scan);

  /// <summary>Runs a scan and leaves its report in the handle. Blocks until it ends.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_start",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanStart(ProductScanHandle scan,
                                               ref ProductScanRequest request);

  /// <summary>Asks the running scan to stop.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_cancel",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanCancel(ProductScanHandle scan);

  /// <summary>Gives the state and the counters of the running or last scan.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_poll",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanPoll(ProductScanHandle scan, out ProductScanStatus status);

  /// <summary>Gives the display name of the junk category that the scan walks.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_current_group",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanCurrentGroup(ProductScanHandle scan, [Out] char[] output,
      ulong capacity, out ulong needed);

  /// <summary>Gives the path of the file that the scan works on.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_current_path",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanCurrentPath(ProductScanHandle scan, [Out] char[] output,
      ulong capacity, out ulong needed);

  /// <summary>Gives the times and counters of the running or last scan.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_get_performance",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanGetPerformance(ProductScanHandle scan,
      ref ProductScanPerformance performance);

  /// <summary>Gives the number of rows in the report, headers included.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_report_count",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanReportCount(ProductScanHandle scan, out ulong count);

  /// <summary>Gives a row of the report: four texts and its numbers.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_report_row",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanReportRow(ProductScanHandle scan, ulong index,
      [Out] char[] path, ulong pathCapacity, out ulong pathNeeded, [Out] char[] name,
      ulong nameCapacity, out ulong nameNeeded, [Out] char[] title, ulong titleCapacity,
      out ulong titleNeeded, [Out] char[] location, ulong locationCapacity,
      out ulong locationNeeded, out ProductScanRow row);

  /// <summary>Gives the group that contains the group of a row.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_report_row_parent_group_id",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanReportRowParentGroupId(ProductScanHandle scan, ulong index,
      out ulong parentGroupId);

  /// <summary>Deletes the files of items for good. Blocks until the clean ends.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_start_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanStartClean(ProductScanHandle scan, ulong[] itemIds,
      ulong count);

  /// <summary>Gives the state and the progress of the running or last clean.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_poll_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanPollClean(ProductScanHandle scan,
      out ProductCleanStatus status);

  /// <summary>The same with files deleted, files failed and bytes freed.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_poll_clean_detailed",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanPollCleanDetailed(ProductScanHandle scan,
      ref ProductCleanDetail detail);

  /// <summary>Asks the running clean to stop before the next file.</summary>
  [DllImport(Dll, EntryPoint = "qs_product_scan_cancel_clean",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ProductScanCancelClean(ProductScanHandle scan);

  /// <summary>Tells whether the large-file scan would report a file.</summary>
  [DllImport(Dll, EntryPoint = "qs_large_scan_include",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool LargeScanInclude(string path, long size, uint protectSystem,
                                             string systemRoot, string userHome);

  /// <summary>Gives the class of a file by its extension.</summary>
  [DllImport(Dll, EntryPoint = "qs_large_file_classify",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern LargeClass LargeFileClassify(string path);

  /// <summary>Tells whether a size counts as large.</summary>
  [DllImport(Dll, EntryPoint = "qs_large_file_included",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool LargeFileIncluded(long size);

  /// <summary>Gives the word under which summaries count a size, a static ASCII text.</summary>
  [DllImport(Dll, EntryPoint = "qs_summary_bucket",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern IntPtr SummaryBucket(long size);

  /// <summary>Gives the path that a Path or StartPath of a rule document stands for.</summary>
  [DllImport(Dll, EntryPoint = "qs_expand_junk_path",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status ExpandJunkPath(string rulePath, string userHome, string systemRoot,
                                             [Out] char[] output, ulong capacity, out ulong needed);

  /// <summary>Tells whether a folder may be offered for removal as empty.</summary>
  [DllImport(Dll, EntryPoint = "qs_empty_directory_eligible",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool EmptyDirectoryEligible(string path);

  /// <summary>Gives the hash of a file's whole content as 8 digits and a NUL.</summary>
  [DllImport(Dll, EntryPoint = "qs_xxhash32_file",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status Xxhash32File(string path, [Out] byte[] output, ulong capacity);

  /// <summary>The same with a cancel flag; see Library.HashFile.</summary>
  [DllImport(Dll, EntryPoint = "qs_xxhash32_file_cancelable",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status Xxhash32FileCancelable(string path, [Out] byte[] output,
                                                     ulong capacity, IntPtr cancel);

  /// <summary>Gives the hash of bytes in memory as 8 digits and a NUL.</summary>
  [DllImport(Dll, EntryPoint = "qs_xxhash32_hex",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status Xxhash32Hex(byte[] data, ulong byteCount, [Out] byte[] output,
                                          ulong capacity);

  /// <summary>Gives a sample of a file's content as 300 digits and a NUL.</summary>
  [DllImport(Dll, EntryPoint = "qs_duplicate_sample_hex",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status DuplicateSampleHex(string path, long size, [Out] byte[] output,
                                                 ulong capacity);

  /// <summary>Gives the key of a size and a sample.</summary>
  [DllImport(Dll, EntryPoint = "qs_duplicate_sample_group_key",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status DuplicateSampleGroupKey(long size,
      [MarshalAs(UnmanagedType.LPStr)] string sample, [Out] byte[] output, ulong capacity,
      out ulong needed);

  /// <summary>Gives the key of a set of duplicates.</summary>
  [DllImport(Dll, EntryPoint = "qs_duplicate_hash_group_key",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  public static extern Status DuplicateHashGroupKey(
      [MarshalAs(UnmanagedType.LPStr)] string sampleGroupKey,
      [MarshalAs(UnmanagedType.LPStr)] string fullHash, [Out] byte[] output, ulong capacity,
      out ulong needed);

  /// <summary>Tells whether the duplicate scan would consider a file.</summary>
  [DllImport(Dll, EntryPoint = "qs_duplicate_scan_include",
             CharSet = CharSet.Unicode, ExactSpelling = true, CallingConvention = Cdecl),
   DefaultDllImportSearchPaths(Places)]
  [return: MarshalAs(UnmanagedType.Bool)]
  public static extern bool DuplicateScanInclude(string path, uint protectSystem, string systemRoot,
                                                 string userHome);
}

#endregion

#region What the classes below have in common

/// <summary>A call of the library that did not answer Status.Ok.</summary>
public sealed class QuastelException : Exception {
  /// <summary>For a call and its answer.</summary>
  public QuastelException(string call, Status status) : base(call + " answered " + status) {
    Status = status;
  }

  /// <summary>The answer.</summary>
  public Status Status { get; }

  internal static void Require(string call, Status status) {
    if (status != Status.Ok) {
      throw new QuastelException(call, status);
    }
  }
}

/// <summary>A 32-bit flag in memory that does not move, which other threads may set.</summary>
public sealed class CancelFlag : SafeHandleZeroOrMinusOneIsInvalid {
  /// <summary>A flag that is not set.</summary>
  public CancelFlag() : base(true) {
    SetHandle(Marshal.AllocHGlobal(sizeof(int)));
    Marshal.WriteInt32(handle, 0);
  }

  /// <summary>What the functions of Native take. Valid until the flag is disposed of.</summary>
  public IntPtr Address { get { return handle; } }

  /// <summary>Tells whoever got the address to stop.</summary>
  public void Set() {
    Thread.MemoryBarrier();
    Marshal.WriteInt32(handle, 1);
  }

  /// <summary>Called by the runtime.</summary>
  protected override bool ReleaseHandle() {
    Marshal.FreeHGlobal(handle);
    return true;
  }
}

/// <summary>Fetches texts that the library returns through a buffer.</summary>
internal sealed class TextBuffer {
  public char[] Units = new char[512];
  public ulong Needed = 1;

  public ulong Capacity { get { return (ulong)Units.Length; } }

  public void Grow() {
    if (Needed > Capacity) {
      Units = new char[checked((int)Needed)];
    }
  }

  public override string ToString() { return new string(Units, 0, checked((int)Needed - 1)); }

  public delegate Status Query(char[] units, ulong capacity, out ulong needed);

  // Asks until the text fits: that of a running scan may grow between two calls.
  public string Fetch(string call, Query query) {
    for (;;) {
      Status status = query(Units, Capacity, out Needed);
      if (status != Status.BufferTooSmall) {
        QuastelException.Require(call, status);
        return ToString();
      }
      Grow();
    }
  }
}

internal static class Check {
  // The library reads a text up to its first NUL: with one inside, it would work on another path
  // than the caller wrote.
  public static string Text(string text, string name) {
    if (string.IsNullOrEmpty(text) || text.IndexOf('\0') >= 0) {
      throw new ArgumentException("The text has to be there and to hold no NUL.", name);
    }
    return text;
  }

  public static ulong[] Ids(IEnumerable<ulong> ids) { return new List<ulong>(ids).ToArray(); }
}

/// <summary>A call that blocks, on a thread of its own.</summary>
internal static class Blocking {
  private static readonly TimeSpan Interval = TimeSpan.FromMilliseconds(100);

  // Ends only after the call has, so that nobody frees what it still uses. A cancel does nothing
  // before the call has begun on its thread: it is repeated until the end.
  public static async Task<Status> Run(Func<Status> call, Action cancel, Action report,
                                       CancellationToken token) {
    token.ThrowIfCancellationRequested();
    Task<Status> work = Task.Factory.StartNew(call, CancellationToken.None,
                                              TaskCreationOptions.LongRunning,
                                              TaskScheduler.Default);
    Exception failure = null;
    using (token.Register(cancel)) {
      while (await Task.WhenAny(work, Task.Delay(Interval)).ConfigureAwait(false) != work) {
        if (token.IsCancellationRequested || failure != null) {
          cancel();
          continue;
        }
        try {
          report();
        } catch (Exception error) {
          failure = error;
          cancel();
        }
      }
    }
    Status status = await work.ConfigureAwait(false);
    if (failure != null) {
      throw new InvalidOperationException("The receiver of the progress failed.", failure);
    }
    return status;
  }
}

#endregion

#region Product scan

/// <summary>What a product scan is asked to do.</summary>
public sealed class ScanOptions {
  /// <summary>What to look for.</summary>
  public ScanKind Kind { get; set; } = ScanKind.LargeFiles;
  /// <summary>The folders to scan; junk scans take theirs from the rules.</summary>
  public IList<string> Roots { get; set; } = new List<string>();
  /// <summary>Keeps out of the folders of the system and of AppData; true when not said.</summary>
  public bool ProtectSystem { get; set; } = true;
  /// <summary>The profile folder; that of the current user when not said.</summary>
  public string UserHome { get; set; } =
      Environment.GetFolderPath(Environment.SpecialFolder.UserProfile);
  /// <summary>The root of the system drive; taken from the environment when not said.</summary>
  public string SystemRoot { get; set; } =
      (Environment.GetEnvironmentVariable("SystemDrive") ?? "C:") + "\\";
  /// <summary>The rule document of a junk scan.</summary>
  public string RulesPath { get; set; }

  // Fills a request for the time of one call.
  internal Status Use(Func<ProductScanRequest, Status> call) {
    List<IntPtr> texts = new List<IntPtr>();
    IntPtr roots = IntPtr.Zero;
    try {
      Func<string, string, IntPtr> copy = (text, name) => {
        IntPtr copied = Marshal.StringToHGlobalUni(Check.Text(text, name));
        texts.Add(copied);
        return copied;
      };
      ProductScanRequest request = new ProductScanRequest {
        Size = (uint)Marshal.SizeOf(typeof(ProductScanRequest)),
        Kind = Kind,
        ProtectSystem = ProtectSystem ? 1u : 0u,
        UserHome = copy(UserHome, nameof(UserHome)),
        SystemRoot = copy(SystemRoot, nameof(SystemRoot)),
        RulesPath = RulesPath == null ? IntPtr.Zero : copy(RulesPath, nameof(RulesPath))
      };
      if (Roots.Count > 0) {
        IntPtr[] addresses = new IntPtr[Roots.Count];
        for (int i = 0; i < addresses.Length; ++i) {
          addresses[i] = copy(Roots[i], nameof(Roots));
        }
        roots = Marshal.AllocHGlobal(IntPtr.Size * addresses.Length);
        Marshal.Copy(addresses, 0, roots, addresses.Length);
        request.Roots = roots;
        request.RootCount = (ulong)addresses.Length;
      }
      return call(request);
    } finally {
      texts.ForEach(Marshal.FreeHGlobal);
      Marshal.FreeHGlobal(roots);
    }
  }
}

/// <summary>One row of a product scan's report.</summary>
public sealed class ReportRow {
  internal ReportRow(string path, string name, string title, string location,
                     ProductScanRow numbers, ulong parentGroupId) {
    Path = path;
    Name = name;
    Title = title;
    Location = location;
    Numbers = numbers;
    ParentGroupId = parentGroupId;
  }

  /// <summary>The full path.</summary>
  public string Path { get; }
  /// <summary>The file name.</summary>
  public string Name { get; }
  /// <summary>The text of the row's group or class.</summary>
  public string Title { get; }
  /// <summary>The folder of a large file, the key of a set, the name of a junk group.</summary>
  public string Location { get; }
  /// <summary>Identifier, size, time and marks, as they were when the row was read.</summary>
  public ProductScanRow Numbers { get; }
  /// <summary>The group around the row's group; 0 at the top level.</summary>
  public ulong ParentGroupId { get; }
}

/// <summary>A scan of one of the three kinds and the clean of its rows.</summary>
public sealed class ProductScan : IDisposable {
  private readonly ProductScanHandle handle;

  /// <summary>Idle, with an empty report.</summary>
  public ProductScan() {
    QuastelException.Require("qs_product_scan_create", Native.ProductScanCreate(out handle));
  }

  /// <summary>Frees the report, once no call uses it any more.</summary>
  public void Dispose() { handle.Dispose(); }

  /// <summary>
  /// Scans. Throws OperationCanceledException for a cancel and QuastelException for any other
  /// status but success; what was found until then can be read in both cases.
  /// </summary>
  public async Task ScanAsync(ScanOptions options, IProgress<ProductScanStatus> progress = null,
                              CancellationToken token = default(CancellationToken)) {
    Status status = await Blocking.Run(
        () => options.Use(request => Native.ProductScanStart(handle, ref request)),
        () => Native.ProductScanCancel(handle), () => progress?.Report(Poll()), token);
    if (status == Status.Cancelled) {
      throw new OperationCanceledException(token);
    }
    QuastelException.Require("qs_product_scan_start", status);
  }

  /// <summary>
  /// Deletes the files of items for good, each only while it is what the scan saw. Throws like
  /// ScanAsync; Cleaned tells what was done until then. A clean that is refused deletes nothing.
  /// </summary>
  public async Task<ProductCleanDetail> CleanAsync(
      IEnumerable<ulong> itemIds, IProgress<ProductCleanDetail> progress = null,
      CancellationToken token = default(CancellationToken)) {
    ulong[] ids = Check.Ids(itemIds);
    Status status = await Blocking.Run(
        () => Native.ProductScanStartClean(handle, ids, (ulong)ids.Length),
        () => Native.ProductScanCancelClean(handle), () => progress?.Report(Cleaned()), token);
    if (status == Status.Cancelled) {
      throw new OperationCanceledException(token);
    }
    QuastelException.Require("qs_product_scan_start_clean", status);
    return Cleaned();
  }

  /// <summary>State and counters of the running or last scan.</summary>
  public ProductScanStatus Poll() {
    ProductScanStatus status;
    QuastelException.Require("qs_product_scan_poll", Native.ProductScanPoll(handle, out status));
    return status;
  }

  /// <summary>State and counters of the running or last clean.</summary>
  public ProductCleanDetail Cleaned() {
    ProductCleanDetail detail = new ProductCleanDetail {
      Size = (uint)Marshal.SizeOf(typeof(ProductCleanDetail))
    };
    QuastelException.Require("qs_product_scan_poll_clean_detailed",
                             Native.ProductScanPollCleanDetailed(handle, ref detail));
    return detail;
  }

  /// <summary>Times and counters of the running or last scan.</summary>
  public ProductScanPerformance Performance() {
    ProductScanPerformance performance = new ProductScanPerformance {
      Size = (uint)Marshal.SizeOf(typeof(ProductScanPerformance))
    };
    QuastelException.Require("qs_product_scan_get_performance",
                             Native.ProductScanGetPerformance(handle, ref performance));
    return performance;
  }

  /// <summary>The file that the scan works on.</summary>
  public string CurrentPath() {
    return new TextBuffer().Fetch("qs_product_scan_current_path",
        (char[] units, ulong capacity, out ulong needed) =>
            Native.ProductScanCurrentPath(handle, units, capacity, out needed));
  }

  /// <summary>The junk category that the scan walks.</summary>
  public string CurrentGroup() {
    return new TextBuffer().Fetch("qs_product_scan_current_group",
        (char[] units, ulong capacity, out ulong needed) =>
            Native.ProductScanCurrentGroup(handle, units, capacity, out needed));
  }

  /// <summary>The rows that are there when it is called, in the order of the report.</summary>
  public IEnumerable<ReportRow> Rows() {
    ulong count;
    QuastelException.Require("qs_product_scan_report_count",
                             Native.ProductScanReportCount(handle, out count));
    TextBuffer[] texts = {new TextBuffer(), new TextBuffer(), new TextBuffer(), new TextBuffer()};
    for (ulong index = 0; index < count; ++index) {
      yield return Row(index, texts);
    }
  }

  private ReportRow Row(ulong index, TextBuffer[] texts) {
    ProductScanRow row;
    Status status = Read(index, texts, out row);
    if (status == Status.BufferTooSmall) {
      // The texts of a row never change, so the second call has room for them.
      Array.ForEach(texts, text => text.Grow());
      status = Read(index, texts, out row);
    }
    QuastelException.Require("qs_product_scan_report_row", status);
    ulong parent;
    QuastelException.Require("qs_product_scan_report_row_parent_group_id",
                             Native.ProductScanReportRowParentGroupId(handle, index, out parent));
    return new ReportRow(texts[0].ToString(), texts[1].ToString(), texts[2].ToString(),
                         texts[3].ToString(), row, parent);
  }

  private Status Read(ulong index, TextBuffer[] texts, out ProductScanRow row) {
    return Native.ProductScanReportRow(
        handle, index, texts[0].Units, texts[0].Capacity, out texts[0].Needed, texts[1].Units,
        texts[1].Capacity, out texts[1].Needed, texts[2].Units, texts[2].Capacity,
        out texts[2].Needed, texts[3].Units, texts[3].Capacity, out texts[3].Needed, out row);
  }
}

#endregion

#region Session

/// <summary>A file that a session found.</summary>
public sealed class FoundFile {
  internal FoundFile(string path, string name, ulong size, ulong modified) {
    Path = path;
    Name = name;
    Size = size;
    Modified = modified;
  }

  /// <summary>The full path.</summary>
  public string Path { get; }
  /// <summary>The file name.</summary>
  public string Name { get; }
  /// <summary>The size in bytes.</summary>
  public ulong Size { get; }
  /// <summary>Last-write time in ticks of local time; see Library.TimeOf.</summary>
  public ulong Modified { get; }
}

/// <summary>A scan of one folder and the clean of its rows.</summary>
public sealed class Session : IDisposable {
  private readonly SessionHandle handle;

  /// <summary>Idle, without rows.</summary>
  public Session() {
    QuastelException.Require("qs_session_create", Native.SessionCreate(out handle));
  }

  /// <summary>Frees the rows, once no call uses them any more.</summary>
  public void Dispose() { handle.Dispose(); }

  /// <summary>Walks a folder and keeps a row for each file. Throws like ProductScan.</summary>
  public async Task ScanAsync(string root, SessionMode mode = SessionMode.AllFiles,
                              IProgress<SessionScanStatus> progress = null,
                              CancellationToken token = default(CancellationToken)) {
    Check.Text(root, nameof(root));
    Status status = await Blocking.Run(() => Native.SessionStartScan(handle, root, mode),
                                       () => Native.SessionCancelScan(handle),
                                       () => progress?.Report(Poll()), token);
    if (status == Status.Cancelled) {
      throw new OperationCanceledException(token);
    }
    QuastelException.Require("qs_session_start_scan", status);
  }

  /// <summary>Deletes the files of rows for good, up to the first that cannot be.</summary>
  public async Task CleanAsync(IEnumerable<ulong> indexes,
                               CancellationToken token = default(CancellationToken)) {
    ulong[] rows = Check.Ids(indexes);
    Status status = await Blocking.Run(
        () => Native.SessionStartClean(handle, rows, (ulong)rows.Length),
        () => Native.SessionCancelClean(handle), () => {}, token);
    if (status == Status.Cancelled) {
      throw new OperationCanceledException(token);
    }
    QuastelException.Require("qs_session_start_clean", status);
  }

  /// <summary>State and counters of the running or last scan.</summary>
  public SessionScanStatus Poll() {
    SessionScanStatus status;
    QuastelException.Require("qs_session_poll_scan", Native.SessionPollScan(handle, out status));
    return status;
  }

  /// <summary>State and counters of the running or last clean.</summary>
  public SessionCleanStatus Cleaned() {
    SessionCleanStatus status;
    QuastelException.Require("qs_session_poll_clean", Native.SessionPollClean(handle, out status));
    return status;
  }

  /// <summary>The rows that are there when it is called; the place in them is the index.</summary>
  public IEnumerable<FoundFile> Rows() {
    ulong count;
    QuastelException.Require("qs_session_report_count",
                             Native.SessionReportCount(handle, out count));
    TextBuffer path = new TextBuffer();
    TextBuffer name = new TextBuffer();
    for (ulong index = 0; index < count; ++index) {
      SessionRow row;
      Status status = Read(index, path, name, out row);
      if (status == Status.BufferTooSmall) {
        path.Grow();
        name.Grow();
        status = Read(index, path, name, out row);
      }
      QuastelException.Require("qs_session_report_row", status);
      yield return new FoundFile(path.ToString(), name.ToString(), row.Size, row.Modified);
    }
  }

  private Status Read(ulong index, TextBuffer path, TextBuffer name, out SessionRow row) {
    return Native.SessionReportRow(handle, index, path.Units, path.Capacity, out path.Needed,
                                   name.Units, name.Capacity, out name.Needed, out row);
  }
}

#endregion

#region Building blocks

/// <summary>Walks through folders.</summary>
public static class Files {
  /// <summary>
  /// Calls `each` for every file of a folder, on the calling thread. An exception of `each` ends
  /// the walk and comes back; it never passes through the library.
  /// </summary>
  public static void Enumerate(string root, string pattern, bool recursive, Action<FoundFile> each,
                               CancellationToken token = default(CancellationToken)) {
    Check.Text(root, nameof(root));
    Walk("qs_enumerate_files", token, (flag, guard) => {
      FileCallback callback = (user, path, size, lastWrite, name) =>
          guard(() => each(new FoundFile(path, name, size, lastWrite)));
      Status status = Native.EnumerateFiles(root, pattern, recursive ? 1u : 0u, callback,
                                            IntPtr.Zero, flag);
      GC.KeepAlive(callback);
      return status;
    });
  }

  /// <summary>The direct subfolders of a folder.</summary>
  public static IList<string> Subfolders(string root,
                                         CancellationToken token = default(CancellationToken)) {
    Check.Text(root, nameof(root));
    List<string> found = new List<string>();
    Walk("qs_enumerate_directories", token, (flag, guard) => {
      DirectoryCallback callback = (user, path) => guard(() => found.Add(path));
      Status status = Native.EnumerateDirectories(root, callback, IntPtr.Zero, flag);
      GC.KeepAlive(callback);
      return status;
    });
    return found;
  }

  private static void Walk(string call, CancellationToken token,
                           Func<IntPtr, Action<Action>, Status> walk) {
    token.ThrowIfCancellationRequested();
    Exception failure = null;
    using (CancelFlag flag = new CancelFlag())
    using (token.Register(flag.Set)) {
      Status status = walk(flag.Address, action => {
        try {
          if (failure == null) {
            action();
          }
        } catch (Exception error) {
          failure = error;
          flag.Set();
        }
      });
      if (failure != null) {
        throw new InvalidOperationException("The receiver of the files failed.", failure);
      }
      if (status == Status.Cancelled) {
        throw new OperationCanceledException(token);
      }
      QuastelException.Require(call, status);
    }
  }
}

/// <summary>What needs no handle.</summary>
public static class Library {
  private const int HashCapacity = 9;

  /// <summary>The version of the library, such as "0.4.0".</summary>
  public static string Version { get { return Marshal.PtrToStringAnsi(Native.Version()); } }

  /// <summary>The hash of a file's content: XXH32, least significant byte first.</summary>
  public static string HashFile(string path,
                                CancellationToken token = default(CancellationToken)) {
    Check.Text(path, nameof(path));
    token.ThrowIfCancellationRequested();
    byte[] digits = new byte[HashCapacity];
    using (CancelFlag flag = new CancelFlag())
    using (token.Register(flag.Set)) {
      Status status = Native.Xxhash32FileCancelable(path, digits, HashCapacity, flag.Address);
      if (status == Status.Cancelled) {
        throw new OperationCanceledException(token);
      }
      QuastelException.Require("qs_xxhash32_file_cancelable", status);
    }
    return Encoding.ASCII.GetString(digits, 0, HashCapacity - 1);
  }

  /// <summary>The folders of a list that do not lie in another one of it.</summary>
  public static IList<string> OutermostFolders(IEnumerable<string> folders) {
    string[] paths = new List<string>(folders).ToArray();
    Array.ForEach(paths, path => Check.Text(path, nameof(folders)));
    ulong kept = 0;
    string joined = new TextBuffer().Fetch("qs_filter_dir",
        (char[] units, ulong capacity, out ulong needed) =>
            Native.FilterDir(paths, (ulong)paths.Length, units, capacity, out kept, out needed));
    // Each text has its NUL, and one more ends the list.
    string[] texts = joined.Split('\0');
    Array.Resize(ref texts, checked((int)kept));
    return texts;
  }

  /// <summary>The time that the library's ticks mean. They begin as those of DateTime do.</summary>
  public static DateTime TimeOf(ulong ticks) {
    return new DateTime(checked((long)ticks), DateTimeKind.Local);
  }
}

#endregion

}  // namespace Quastel
