// The KESTO library from C#: the record and its rows as AUEglobals.h declares them, under the same names; that header
// says what each field means. Compile with -unsafe; the runtime finds libKESTO.so or KESTO.dll as it finds any library.

using System;
using System.Runtime.InteropServices;

#pragma warning disable 649 // fields that only the library writes

namespace Kesto
{
    [StructLayout(LayoutKind.Sequential)]
    public struct Signal
    {
        public float quantity, quality;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct ComponentRow
    {
        public float id, techid, key, brand, size;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct ConnectionRow
    {
        public int link, senderId, senderPort, receiverId, receiverPort;
    }

    [StructLayout(LayoutKind.Sequential)]
    public struct SpecificationRow
    {
        public float host0, host1, brand, host3, select1, select2, number, value, host8;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct SeriesEntry
    {
        public int id;
        public float* Value;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct SignalSeriesEntry
    {
        public int id;
        public Signal* Signal;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct SplitEntry
    {
        public int id;
        public int nMembers;
        public int* members;
        public float beta;
    }

    [StructLayout(LayoutKind.Sequential)]
    public unsafe struct AUEglobals
    {
        public int StartTime;
        public int nSteps;
        public float TimeStep;
        public float Latitude;
        public int StopOnInfeas;
        public int BuildTree;
        public int CurStep;
        public int* PotCompIds;
        public int nPotComps;
        public SpecificationRow* TechSpecs;
        public int nTechSpecs;
        public ComponentRow* Net_Compnt;
        public int nComps;
        public ConnectionRow* Net_Conn;
        public int nConns;
        public SeriesEntry* FreqSer;
        public int nFreqSer;
        public SeriesEntry* Rainfall;
        public int nRainfall;
        public SeriesEntry* Temp;
        public int nTemp;
        public SeriesEntry* Tmin;
        public int nTmin;
        public SeriesEntry* Tmax;
        public int nTmax;
        public SeriesEntry* Wind;
        public int nWind;
        public SeriesEntry* Multpls;
        public int nMultpls;
        public SeriesEntry* Threshold;
        public int nThreshold;
        public SeriesEntry* Occup;
        public int nOccup;
        public SeriesEntry* Dmdflct;
        public int nDmdflct;
        public SeriesEntry* InsDmd;
        public int nInsDmd;
        public SeriesEntry* WatQuant;
        public int nWatQuant;
        public SeriesEntry* WatQual;
        public int nWatQual;
        public int nSplits; // the one count that stands before its table
        public SplitEntry* Splits;
        public SignalSeriesEntry* Logs;
        public int nLogs;
        public SignalSeriesEntry* WatBod;
        public int nWatBod;
        public SeriesEntry* NrgPot;
        public SeriesEntry* InfPot;
        public SeriesEntry* LosPot;
        public SeriesEntry* EvaPot;
        public SeriesEntry* CapPot;
        public SeriesEntry* OprPot;
        public fixed byte ErrMsg[256];
        public int ErrFlag;

        public string Error()
        {
            fixed (byte* text = ErrMsg)
                return Marshal.PtrToStringAnsi((IntPtr)text);
        }
    }

    public static unsafe class Library
    {
        public const int Success = 123456789;
        public const int SetupFailure = -123456798;
        public const int RunFailure = -123456789;

        [DllImport("KESTO", CallingConvention = CallingConvention.Cdecl)]
        public static extern int KESTO_simul(AUEglobals* Globals, int first, int last);

        [DllImport("KESTO", CallingConvention = CallingConvention.Cdecl)]
        public static extern void FreeAUEglobals(AUEglobals* Globals);
    }
}
