// DllTest.exe FOLDER: the classes of Quastel.cs on the DLL itself, on real files in FOLDER.

using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;
using Quastel;

internal static class DllTest {
  private const long Large = 10485761;
  private static string folder;
  private static int trees;

  private sealed class Failure : Exception {
    public Failure(string text) : base(text) {}
  }

  private static void Equal<T>(T expected, T found, string what) {
    if (!EqualityComparer<T>.Default.Equals(expected, found)) {
      throw new Failure(what + " is " + found + ", expected " + expected);
    }
  }

  private static TError Throws<TError>(Action action) where TError : Exception {
    try {
      action();
    } catch (TError error) {
      return error;
    }
    throw new Failure("no " + typeof(TError).Name);
  }

  private static string Tree(params string[] files) {
    string root = Path.Combine(folder, "tree" + ++trees);
    Directory.CreateDirectory(root);
    foreach (string name in files) {
      string path = Path.Combine(root, name);
      Directory.CreateDirectory(Path.GetDirectoryName(path));
      using (FileStream file = File.Create(path)) {
        if (name.EndsWith(".iso")) {
          file.SetLength(Large);
        } else {
          file.Write(Encoding.ASCII.GetBytes("the same"), 0, 8);
        }
      }
    }
    return root;
  }

  private static string Names(IEnumerable<string> names) {
    return string.Join(" ", names.OrderBy(name => name, StringComparer.Ordinal));
  }

  private static string Left(string root) {
    return Names(Directory.GetFiles(root).Select(Path.GetFileName));
  }

  private static ScanOptions For(ScanKind kind, string root) {
    return new ScanOptions { Kind = kind, Roots = { root }, UserHome = Tree() };
  }

  private static void Large_files_are_found_and_cleaned() {
    string root = Tree("a.iso", "sub\\\u00fc \u6570 \U0001f3b5.iso", "small.txt");
    using (ProductScan scan = new ProductScan()) {
      scan.ScanAsync(For(ScanKind.LargeFiles, root)).Wait();
      List<ReportRow> rows = scan.Rows().ToList();
      Equal("a.iso \u00fc \u6570 \U0001f3b5.iso", Names(rows.Select(row => row.Name)), "names");
      ReportRow first = rows.Single(row => row.Name == "a.iso");
      Equal(Path.Combine(root, "a.iso"), first.Path, "path");
      Equal("Archives", first.Title, "title");
      Equal(root, first.Location, "location");
      Equal(Large, first.Numbers.Size, "size");
      Equal(RowKind.LargeFile, first.Numbers.Kind, "kind");
      Equal(LargeClass.Archives, first.Numbers.LargeClass, "class");
      Equal(1u, first.Numbers.Deletable, "deletable");
      Equal(0ul, first.ParentGroupId, "parent");
      double apart = (Library.TimeOf(first.Numbers.Modified) -
                      File.GetLastWriteTime(first.Path)).TotalSeconds;
      Equal(true, Math.Abs(apart) < 2, "time of the file, " + apart + " s apart,");
      Equal(WorkState.Done, scan.Poll().State, "state");
      Equal(2ul, scan.Poll().ItemCount, "items");
      Equal(3ul, scan.Performance().FilesVisited, "files");
      Equal(192u, scan.Performance().Size, "size of the record");
      Equal("", scan.CurrentGroup(), "group");
      Equal(true, scan.CurrentPath().StartsWith(root), "current path");

      ProductCleanDetail detail = scan.CleanAsync(new[] {first.Numbers.ItemId}).Result;
      Equal(1ul, detail.Deleted, "deleted");
      Equal((ulong)Large, detail.BytesFreed, "bytes freed");
      Equal("small.txt", Left(root), "what is left");
      Equal(1u, scan.Rows().Single(row => row.Name == "a.iso").Numbers.Deleted, "mark");
    }
  }

  private static void The_last_copy_of_a_set_stays() {
    string root = Tree("one.txt", "two.txt");
    using (ProductScan scan = new ProductScan()) {
      scan.ScanAsync(For(ScanKind.Duplicates, root)).Wait();
      ulong[] ids = scan.Rows().Select(row => row.Numbers.ItemId).ToArray();
      Equal(2, ids.Length, "copies");
      QuastelException error = Throws<QuastelException>(
          () => scan.CleanAsync(ids).GetAwaiter().GetResult());
      Equal(Status.InvalidArgument, error.Status, "status");
      Equal("one.txt two.txt", Left(root), "what is left");
      scan.CleanAsync(new[] {ids[0]}).Wait();
      Equal(1, Directory.GetFiles(root).Length, "what is left");
    }
  }

  private static void Junk_has_its_groups_and_unpaired_surrogates_stay() {
    string root = Tree("junk\\one.tmp");
    string title = "high \ud83d low \udc00 end";
    string rules = "<Root><Category DisplayName='" + title + "'><Folder Path='{UserHome}\\junk'" +
                   " DisplayName='F'/></Category></Root>";
    byte[] bytes = new byte[2 + 2 * rules.Length];
    bytes[0] = 0xFF;
    bytes[1] = 0xFE;
    Buffer.BlockCopy(rules.Replace('\'', '"').ToCharArray(), 0, bytes, 2, 2 * rules.Length);
    File.WriteAllBytes(Path.Combine(root, "rules.xml"), bytes);
    using (ProductScan scan = new ProductScan()) {
      scan.ScanAsync(new ScanOptions {
        Kind = ScanKind.JunkRules, UserHome = root, RulesPath = Path.Combine(root, "rules.xml")
      }).Wait();
      List<ReportRow> rows = scan.Rows().ToList();
      Equal(3, rows.Count, "rows");
      Equal(RowKind.Group, rows[0].Numbers.Kind, "kind");
      Equal(Native.NoItemId, rows[0].Numbers.ItemId, "id of a header");
      Equal(title, rows[0].Title, "title");
      Equal(title, scan.CurrentGroup(), "group");
      Equal(1u, rows[2].Numbers.Preselect, "preselect");
      Equal(1ul, rows[2].ParentGroupId, "parent");
    }
    char[] units = new char[16];
    ulong needed;
    Equal(Status.Ok, Native.PathCombine("C:\\\ud83d", "\udc00", units, 16, out needed), "status");
    Equal("C:\\\ud83d\\\udc00", new string(units, 0, (int)needed - 1), "combined");
  }

  private static void A_scan_can_be_watched_and_cancelled() {
    string root = Tree("a.iso");
    Environment.SetEnvironmentVariable("QUASTEL_SCAN_HOLD_MS", "5000");
    try {
      using (ProductScan scan = new ProductScan())
      using (CancellationTokenSource source = new CancellationTokenSource()) {
        int seen = 0;
        DateTime start = DateTime.UtcNow;
        Receiver<ProductScanStatus> progress = new Receiver<ProductScanStatus>(status => {
          Equal(WorkState.Running, status.State, "state");
          if (++seen == 2) {
            source.Cancel();
          }
        });
        Throws<OperationCanceledException>(
            () => scan.ScanAsync(For(ScanKind.LargeFiles, root), progress, source.Token)
                .GetAwaiter().GetResult());
        Equal(2, seen, "reports");
        Equal(true, (DateTime.UtcNow - start).TotalSeconds < 4, "the hold was not waited for:");
        Equal(WorkState.Cancelled, scan.Poll().State, "state");
        Equal(0, scan.Rows().Count(), "rows");

        start = DateTime.UtcNow;
        Receiver<ProductScanStatus> broken = new Receiver<ProductScanStatus>(status => {
          throw new Failure("mine");
        });
        Exception error = Throws<InvalidOperationException>(
            () => scan.ScanAsync(For(ScanKind.LargeFiles, root), broken).GetAwaiter().GetResult());
        Equal("mine", error.InnerException.Message, "the receiver's error");
        Equal(true, (DateTime.UtcNow - start).TotalSeconds < 4, "the hold was not waited for:");
      }
    } finally {
      Environment.SetEnvironmentVariable("QUASTEL_SCAN_HOLD_MS", null);
    }
  }

  private sealed class Receiver<T> : IProgress<T> {
    private readonly Action<T> action;
    public Receiver(Action<T> action) { this.action = action; }
    public void Report(T value) { action(value); }
  }

  private static void A_session_scans_and_cleans() {
    string root = Tree("one.txt", "two.txt");
    using (Session session = new Session()) {
      session.ScanAsync(root).Wait();
      List<FoundFile> rows = session.Rows().ToList();
      Equal("one.txt two.txt", Names(rows.Select(row => row.Name)), "names");
      Equal(8ul, rows[0].Size, "size");
      SessionScanStatus status = session.Poll();
      Equal(WorkState.Done, status.State, "state");
      Equal(16ul, status.BytesVisited, "bytes");
      Equal(2ul, status.RowCount, "rows");
      session.CleanAsync(new[] {(ulong)rows.FindIndex(row => row.Name == "one.txt")}).Wait();
      Equal("two.txt", Left(root), "what is left");
      Equal(1ul, session.Cleaned().Processed, "processed");
      Equal(WorkState.Done, session.Cleaned().State, "state");
      QuastelException error = Throws<QuastelException>(
          () => session.CleanAsync(new[] {9ul}).GetAwaiter().GetResult());
      Equal(Status.NotFound, error.Status, "status");
    }
  }

  private static void Folders_are_walked() {
    string root = Tree("one.txt", "sub\\two.txt");
    List<string> names = new List<string>();
    Files.Enumerate(root, "*.txt", true, file => names.Add(file.Name + file.Size));
    Equal("one.txt8 two.txt8", Names(names), "files");
    Equal(Path.Combine(root, "sub"), Files.Subfolders(root).Single(), "subfolder");
    int calls = 0;
    Exception error = Throws<InvalidOperationException>(() => Files.Enumerate(root, "*", true, file => {
      ++calls;
      throw new Failure("mine");
    }));
    Equal("mine", error.InnerException.Message, "the receiver's error");
    Equal(1, calls, "calls");
    using (CancellationTokenSource source = new CancellationTokenSource()) {
      Throws<OperationCanceledException>(
          () => Files.Enumerate(root, "*", true, file => source.Cancel(), source.Token));
    }
  }

  private static void What_needs_no_handle_works() {
    Equal("0.4.0", Library.Version, "version");
    string root = Tree("one.txt");
    byte[] digits = new byte[9];
    Equal(Status.Ok, Native.Xxhash32Hex(Encoding.ASCII.GetBytes("the same"), 8, digits, 9),
          "status");
    Equal(Encoding.ASCII.GetString(digits, 0, 8), Library.HashFile(Path.Combine(root, "one.txt")),
          "hash");
    QuastelException error = Throws<QuastelException>(() => Library.HashFile(root + "\\missing"));
    Equal(Status.Failed, error.Status, "status");
    Equal("C:\\a|D:\\b", string.Join("|", Library.OutermostFolders(
        new[] {"C:\\a\\inner", "C:\\a", "D:\\b"})), "folders");
    Equal(0, Library.OutermostFolders(new string[0]).Count, "no folders");
    Throws<ArgumentException>(() => Library.HashFile("C:\\a\0b"));
    Throws<ArgumentException>(() => Files.Subfolders(""));
    byte[] key = new byte[64];
    ulong needed;
    Equal(Status.Ok, Native.DuplicateSampleGroupKey(2, "4142", key, 64, out needed), "status");
    Equal("2 4142", Encoding.ASCII.GetString(key, 0, (int)needed - 1), "key");
    Equal("Huge", Marshal.PtrToStringAnsi(Native.SummaryBucket(1073741825)), "bucket");
    Equal(true, Native.LargeFileIncluded(Large), "included");
    Equal(false, Native.LargeFileIncluded(Large - 1), "included");
    Equal(LargeClass.Media, Native.LargeFileClassify("film.mkv"), "class");
  }

  private static void A_handle_in_use_outlives_its_owner() {
    Environment.SetEnvironmentVariable("QUASTEL_SCAN_HOLD_MS", "300");
    try {
      ProductScan scan = new ProductScan();
      System.Threading.Tasks.Task running = scan.ScanAsync(For(ScanKind.LargeFiles, Tree("a.iso")));
      SpinWait.SpinUntil(() => scan.Poll().State == WorkState.Running, 5000);
      Equal(WorkState.Running, scan.Poll().State, "state");
      scan.Dispose();
      running.Wait();
      Throws<ObjectDisposedException>(() => scan.Poll());
    } finally {
      Environment.SetEnvironmentVariable("QUASTEL_SCAN_HOLD_MS", null);
    }
  }

  private static int Main(string[] arguments) {
    folder = arguments[0];
    Action[] tests = {
      Large_files_are_found_and_cleaned, The_last_copy_of_a_set_stays,
      Junk_has_its_groups_and_unpaired_surrogates_stay, A_scan_can_be_watched_and_cancelled,
      A_session_scans_and_cleans, Folders_are_walked, What_needs_no_handle_works,
      A_handle_in_use_outlives_its_owner,
    };
    int failed = 0;
    foreach (Action test in tests) {
      try {
        test();
        Console.WriteLine("ok   " + test.Method.Name);
      } catch (Exception error) {
        ++failed;
        Console.WriteLine("FAIL " + test.Method.Name + ": " + error);
      }
    }
    Console.WriteLine("{0} tests, {1} failed", tests.Length, failed);
    return failed == 0 ? 0 : 1;
  }
}
