// A host in C#: a roof fills a tank that a garden draws from, for eight days. What the library reads stands in memory
// that the garbage collector does not move while the record points there.
//
//   mcs -unsafe hosts/csharp/Host.cs hosts/csharp/Kesto.cs -out:build/csharp-host.exe
//   LD_LIBRARY_PATH=build/release mono build/csharp-host.exe

using System;
using System.Collections.Generic;
using System.Globalization;
using System.Runtime.InteropServices;
using Kesto;

static unsafe class Host
{
    const int Days = 8;
    const int Group = 1, Roof = 11, Tank = 12, Garden = 13, Mains = 14, Spill = 15;
    const int Roofing = 1, NoCost = 2, NoSuchBrand = 9;

    static readonly float[] Rain = { 10, 0, 0, 2.5f, 20, 0, 0, 0 }; // mm
    static readonly float[] Demand = { 200, 200, 200, 200, 200, 200, 200, 200 };
    static readonly float[] Stored = { 100, 0, 0, 0, 0, 0, 0, 0 }; // 100 L to begin with; the library writes over it

    static readonly List<GCHandle> Pinned = new List<GCHandle>();

    static IntPtr Pin(object table)
    {
        Pinned.Add(GCHandle.Alloc(table, GCHandleType.Pinned));
        return Pinned[Pinned.Count - 1].AddrOfPinnedObject();
    }

    static SeriesEntry* Series(int id, float[] values)
    {
        return (SeriesEntry*)Pin(new[] { new SeriesEntry { id = id, Value = (float*)Pin(values) } });
    }

    static SpecificationRow Specification(int brand, int number, float value)
    {
        return new SpecificationRow { brand = brand, select1 = 1, select2 = 1, number = number, value = value };
    }

    static ComponentRow Component(int id, int type, int group, int brand, float size)
    {
        return new ComponentRow { id = id, techid = type, key = group, brand = brand, size = size };
    }

    static ConnectionRow Connection(int number, int from, int output, int to, int input)
    {
        return new ConnectionRow {
            link = number, senderId = from, senderPort = output, receiverId = to, receiverPort = input };
    }

    static void Fill(AUEglobals* record, bool broken)
    {
        ComponentRow[] components = {
            Component(Roof, 28, Group, broken ? NoSuchBrand : Roofing, 80), // m²
            Component(Garden, 45, Group, 0, 100),                           // percent of its demand
            Component(Tank, 32, Group, NoCost, 500),                        // L
            Component(Mains, 26, 0, 0, 0),                                  // loggers
            Component(Spill, 26, 0, 0, 0),
        };
        ConnectionRow[] connections = {
            Connection(1, Roof, 1, Tank, 1),
            Connection(2, Garden, 1, Tank, 2),
            Connection(3, Tank, 1, Mains, 1), // what the tank could not give
            Connection(4, Tank, 2, Spill, 1),
        };
        SpecificationRow[] specifications = {
            Specification(Roofing, 25, 5),    // quality of the runoff
            Specification(Roofing, 27, 0.1f), // share that wets the roof and evaporates
            Specification(NoCost, 12, 0),
            Specification(NoCost, 13, 0),
        };
        *record = new AUEglobals { nSteps = Days, TimeStep = 1 };
        record->Net_Compnt = (ComponentRow*)Pin(components);
        record->nComps = components.Length;
        record->Net_Conn = (ConnectionRow*)Pin(connections);
        record->nConns = connections.Length;
        record->TechSpecs = (SpecificationRow*)Pin(specifications);
        record->nTechSpecs = specifications.Length;
        record->PotCompIds = (int*)Pin(new[] { Group });
        record->nPotComps = 1;
        record->Rainfall = Series(Group, Rain);
        record->nRainfall = 1;
        record->InsDmd = Series(Garden, Demand);
        record->nInsDmd = 1;
        record->WatQuant = Series(Tank, Stored);
        record->nWatQuant = 1;
    }

    static void Print(AUEglobals* record)
    {
        Console.WriteLine("day  rain mm  stored L   mains L  spilt L  evaporated L");
        for (int k = 0; k < Days; ++k)
            Console.WriteLine(string.Format(CultureInfo.InvariantCulture,
                "{0,3} {1,8:F1} {2,9:F1} {3,9:F1} {4,8:F1} {5,13:F1}", k + 1, Rain[k], Stored[k],
                record->Logs[0].Signal[k].quantity,
                record->Logs[1].Signal[k].quantity + 0.0, // turns the -0 of a dry day into 0
                record->EvaPot[0].Value[k]));
    }

    static int Main(string[] arguments)
    {
        AUEglobals record; // on the stack, where nothing moves
        Fill(&record, arguments.Length > 0 && arguments[0] == "broken");
        int status = Library.KESTO_simul(&record, 1, Days);
        if (status == Library.Success)
            Print(&record);
        else
            Console.Error.WriteLine("KESTO: {0} (status {1})", record.Error(), status);
        Library.FreeAUEglobals(&record);
        foreach (GCHandle handle in Pinned)
            handle.Free();
        return status == Library.Success ? 0 : 1;
    }
}
