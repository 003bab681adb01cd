// Prints sizes and offsets of all that host and library share, one a line, as tests/abi compares them.

using System;
using System.Reflection;
using System.Runtime.InteropServices;
using Kesto;

static class Layout
{
    static int Size(FieldInfo field)
    {
        if (field.FieldType.IsPointer) return IntPtr.Size;
        var buffer = (System.Runtime.CompilerServices.FixedBufferAttribute)Attribute.GetCustomAttribute(
            field, typeof(System.Runtime.CompilerServices.FixedBufferAttribute));
        return buffer != null ? buffer.Length : Marshal.SizeOf(field.FieldType);
    }

    static void Print(Type type)
    {
        Console.WriteLine("{0} size {1}", type.Name, Marshal.SizeOf(type));
        foreach (FieldInfo field in type.GetFields(BindingFlags.Public | BindingFlags.Instance))
            Console.WriteLine("{0}.{1} {2} {3}", type.Name, field.Name,
                              (long)Marshal.OffsetOf(type, field.Name), Size(field));
    }

    static void Main()
    {
        foreach (Type type in new[] {
                     typeof(Signal), typeof(ComponentRow), typeof(ConnectionRow), typeof(SpecificationRow),
                     typeof(SeriesEntry), typeof(SignalSeriesEntry), typeof(SplitEntry), typeof(AUEglobals) })
            Print(type);
    }
}
