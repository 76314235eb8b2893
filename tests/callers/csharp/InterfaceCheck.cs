// InterfaceCheck.exe SNAPSHOT: compares Quastel.cs, as the runtime marshals it, with a snapshot of the
// interface (tests/abi/interface.txt describes its form). The DLL is not needed.

using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using Quastel;

internal static class InterfaceCheck {
  private static int failures;
  private static int comparisons;

  private static readonly Dictionary<string, Type> ConstantFamilies =
      new Dictionary<string, Type> {
        {"QS_SCAN_KIND_", typeof(ScanKind)},   {"QS_STATE_", typeof(WorkState)},
        {"QS_ROW_", typeof(RowKind)},          {"QS_LARGE_", typeof(LargeClass)},
        {"QS_SESSION_", typeof(SessionMode)},  {"QS_", typeof(Status)},
      };

  // What may stand in C# for a type of the header, "in", "out" or "ref" included.
  private static readonly Dictionary<string, string[]> Types = new Dictionary<string, string[]> {
    {"qs_status", new[] {"Status"}},
    {"uint32_t", new[] {"UInt32", "WorkState", "Status", "ScanKind", "RowKind", "LargeClass",
                        "SessionMode"}},
    {"uint32_t[9]", new[] {"UInt32"}},
    {"int32_t", new[] {"Int32", "Boolean"}},
    {"uint64_t", new[] {"UInt64"}},
    {"int64_t", new[] {"Int64"}},
    {"const char*", new[] {"IntPtr", "String as LPStr"}},
    {"char*", new[] {"Byte[] [Out]"}},
    {"const qs_char*", new[] {"String", "IntPtr"}},
    {"qs_char*", new[] {"Char[] [Out]"}},
    {"const qs_char* const*", new[] {"String[] of LPWStr", "IntPtr"}},
    {"uint64_t*", new[] {"out UInt64"}},
    {"const uint64_t*", new[] {"UInt64[]"}},
    {"uint32_t*", new[] {"IntPtr"}},
    {"void*", new[] {"IntPtr"}},
    {"const void*", new[] {"Byte[]"}},
    {"qs_session*", new[] {"SessionHandle", "IntPtr"}},
    {"qs_session**", new[] {"out SessionHandle"}},
    {"qs_product_scan*", new[] {"ProductScanHandle", "IntPtr"}},
    {"qs_product_scan**", new[] {"out ProductScanHandle"}},
    {"qs_file_callback", new[] {"FileCallback"}},
    {"qs_directory_callback", new[] {"DirectoryCallback"}},
  };

  private static void Expect(bool condition, string text) {
    ++comparisons;
    if (!condition) {
      ++failures;
      Console.WriteLine("FAIL " + text);
    }
  }

  private static string Pascal(string name) {
    return string.Concat(name.ToLowerInvariant().Split('_').Where(word => word != "").Select(
        word => char.ToUpperInvariant(word[0]) + word.Substring(1)));
  }

  private static void CheckConstant(string name, ulong value, int size) {
    if (name == "QS_NO_ITEM_ID") {
      Expect(Native.NoItemId == value && size == sizeof(ulong), name);
      return;
    }
    KeyValuePair<string, Type> family = ConstantFamilies.First(each => name.StartsWith(each.Key));
    string own = Pascal(name.Substring(family.Key.Length));
    Expect(Enum.GetUnderlyingType(family.Value) == typeof(uint) && size == sizeof(uint),
           family.Value + " has 4 bytes");
    Expect(Enum.IsDefined(family.Value, own) &&
               Convert.ToUInt64(Enum.Parse(family.Value, own)) == value,
           name + " is " + family.Value + "." + own + " = " + value);
  }

  private static Type CheckRecord(string name, int size, int alignment) {
    Type type = typeof(Native).Assembly.GetType("Quastel." + Pascal(name.Substring(3)));
    Expect(type != null, name + " is declared");
    if (type == null) {
      return null;
    }
    Expect(Marshal.SizeOf(type) == size, name + " has " + size + " bytes");
    Expect(type.StructLayoutAttribute.Pack == alignment, name + " is packed to " + alignment);
    return type;
  }

  private static void CheckField(Type type, int offset, string kind, string name, int size) {
    FieldInfo field = type.GetField(Pascal(name));
    Expect(field != null, type + " has " + name);
    if (field == null) {
      return;
    }
    Expect(Marshal.OffsetOf(type, field.Name).ToInt64() == offset, type + "." + name + " offset");
    Type stored = field.FieldType.IsEnum ? Enum.GetUnderlyingType(field.FieldType)
                                         : field.FieldType;
    // Only the first number of a reserved array is declared; the record's size covers the rest.
    int elements = kind.EndsWith("]") ? 9 : 1;
    Expect(Marshal.SizeOf(stored) * elements == size, type + "." + name + " size");
    Expect(Types[kind].Contains(field.FieldType.Name), type + "." + name + " is a " + kind);
  }

  private static string Described(ParameterInfo parameter) {
    Type type = parameter.ParameterType;
    MarshalAsAttribute marshalled = parameter.GetCustomAttribute<MarshalAsAttribute>();
    if (type.IsByRef) {
      return (parameter.IsOut ? "out " : "ref ") + type.GetElementType().Name;
    }
    if (type == typeof(string)) {
      return marshalled == null ? "String" : "String as " + marshalled.Value;
    }
    if (type == typeof(string[])) {
      return "String[] of " + (marshalled == null ? "?" : marshalled.ArraySubType.ToString());
    }
    return type.Name + (type.IsArray && parameter.IsOut ? " [Out]" : "");
  }

  private static bool Fits(string kind, string described) {
    Match record = Regex.Match(kind, @"^(?:const )?qs_(\w+)\*$");
    if (record.Success && !Types.ContainsKey(kind)) {
      string name = Pascal(record.Groups[1].Value);
      return described == "ref " + name ||
             (described == "out " + name && !kind.StartsWith("const"));
    }
    return Types[kind].Contains(described);
  }

  private static void CheckParameters(string name, string text, ParameterInfo[] parameters) {
    string[] wanted = text == "void" ? new string[0] : Regex.Split(text, ", ");
    Expect(wanted.Length == parameters.Length, name + " takes " + wanted.Length);
    for (int i = 0; i < Math.Min(wanted.Length, parameters.Length); ++i) {
      Match part = Regex.Match(wanted[i], @"^(.*) (\w+)$");
      string described = Described(parameters[i]);
      Expect(Fits(part.Groups[1].Value, described),
             name + ": " + wanted[i] + " is no " + described);
    }
  }

  private static void CheckFunction(string result, string name, string parameters) {
    MethodInfo method = typeof(Native).GetMethod(Pascal(name.Substring(3)));
    DllImportAttribute import =
        method == null ? null : method.GetCustomAttribute<DllImportAttribute>();
    Expect(import != null, name + " is declared");
    if (import == null) {
      return;
    }
    Expect(import.EntryPoint == name && import.ExactSpelling, name + " is the entry point");
    Expect(import.CharSet == CharSet.Unicode, name + " takes UTF-16");
    Expect(import.CallingConvention == CallingConvention.Cdecl, name + " has C's convention");
    Type returned = method.ReturnType;
    Expect(Types[result].Contains(returned.Name), name + " gives " + result);
    if (returned == typeof(bool)) {
      object[] how = method.ReturnTypeCustomAttributes.GetCustomAttributes(
          typeof(MarshalAsAttribute), false);
      Expect(how.Length == 1 && ((MarshalAsAttribute)how[0]).Value == UnmanagedType.Bool,
             name + " gives 4 bytes");
    }
    CheckParameters(name, parameters, method.GetParameters());
  }

  private static void CheckCallback(string name, string parameters) {
    Type type = typeof(Native).Assembly.GetType("Quastel." + Pascal(name.Substring(3)));
    Expect(type != null, name + " is declared");
    if (type == null) {
      return;
    }
    UnmanagedFunctionPointerAttribute how =
        type.GetCustomAttribute<UnmanagedFunctionPointerAttribute>();
    Expect(how != null && how.CharSet == CharSet.Unicode &&
               how.CallingConvention == CallingConvention.Cdecl, name + " takes UTF-16");
    CheckParameters(name, parameters, type.GetMethod("Invoke").GetParameters());
  }

  private static int Main(string[] arguments) {
    int functions = 0;
    int records = 0;
    int constants = 0;
    Type record = null;
    foreach (string line in File.ReadAllLines(arguments[0])) {
      Match match;
      if ((match = Regex.Match(line, @"^constant (\w+) = (\d+) of (\d+) bytes$")).Success) {
        ++constants;
        CheckConstant(match.Groups[1].Value, ulong.Parse(match.Groups[2].Value),
                      int.Parse(match.Groups[3].Value));
      } else if ((match = Regex.Match(line, @"^record (\w+) of (\d+) bytes, aligned to (\d+)$"))
                     .Success) {
        ++records;
        record = CheckRecord(match.Groups[1].Value, int.Parse(match.Groups[2].Value),
                             int.Parse(match.Groups[3].Value));
      } else if ((match = Regex.Match(line, @"^  at (\d+): (.*) (\w+) of (\d+) bytes$")).Success) {
        if (record != null) {
          CheckField(record, int.Parse(match.Groups[1].Value), match.Groups[2].Value,
                     match.Groups[3].Value, int.Parse(match.Groups[4].Value));
        }
      } else if ((match = Regex.Match(line, @"^function (.*?) ?(qs_\w+)\((.*)\)$")).Success) {
        ++functions;
        CheckFunction(match.Groups[1].Value, match.Groups[2].Value, match.Groups[3].Value);
      } else if ((match = Regex.Match(line, @"^callback void (qs_\w+)\((.*)\)$")).Success) {
        CheckCallback(match.Groups[1].Value, match.Groups[2].Value);
      } else {
        Expect(line == "" || Regex.IsMatch(line, "^(#|type |handle )"), "not understood: " + line);
      }
    }
    int declared = typeof(Native).GetMethods().Count(
        method => method.GetCustomAttribute<DllImportAttribute>() != null);
    Expect(declared == functions, declared + " functions are declared, of " + functions);
    int structs = typeof(Native).Assembly.GetTypes().Count(
        type => type.Namespace == "Quastel" && type.IsLayoutSequential == false && type.IsValueType &&
                !type.IsEnum && type.IsExplicitLayout);
    Expect(structs == records, structs + " records are declared, of " + records);
    Console.WriteLine("{0} functions, {1} records, {2} constants: {3} comparisons, {4} failed",
                      functions, records, constants, comparisons, failures);
    return failures == 0 && functions > 0 && records > 0 && constants > 0 ? 0 : 1;
  }
}
