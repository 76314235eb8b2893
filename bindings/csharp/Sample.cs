// Lists the large files of a folder: Sample.exe FOLDER

using System;
using System.Threading;
using Quastel;

internal static class Sample {
  private static int Main(string[] arguments) {
    if (arguments.Length != 1) {
      Console.Error.WriteLine("usage: Sample FOLDER");
      return 2;
    }
    using (CancellationTokenSource interrupt = new CancellationTokenSource())
    using (ProductScan scan = new ProductScan()) {
      Console.CancelKeyPress += (sender, pressed) => {
        pressed.Cancel = true;
        interrupt.Cancel();
      };
      try {
        scan.ScanAsync(new ScanOptions { Roots = { arguments[0] } }, null, interrupt.Token)
            .GetAwaiter().GetResult();
      } catch (OperationCanceledException) {
        Console.Error.WriteLine("stopped; these were found until then:");
      }
      foreach (ReportRow row in scan.Rows()) {
        Console.WriteLine("{0,16:N0}  {1:yyyy-MM-dd}  {2}", row.Numbers.Size,
                          Library.TimeOf(row.Numbers.Modified), row.Path);
      }
      Console.WriteLine("{0:N0} bytes in {1} files", scan.Poll().TotalBytes,
                        scan.Poll().ItemCount);
      return 0;
    }
  }
}
