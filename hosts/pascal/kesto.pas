{ The KESTO library from Pascal: the record and its rows as AUEglobals.h declares them, under the same names; that header
  says what each field means. PACKRECORDS C lays records out as C does. }
unit kesto;

{$mode objfpc}{$packrecords c}

interface

uses ctypes;

const
  KESTO_SUCCESS = 123456789;
  KESTO_SETUP_FAILURE = -123456798;
  KESTO_RUN_FAILURE = -123456789;

type
  PSignal = ^TSignal;
  TSignal = record
    quantity, quality: cfloat;
  end;

  PComponentRow = ^TComponentRow;
  TComponentRow = record
    id, techid, key, brand, size: cfloat;
  end;

  PConnectionRow = ^TConnectionRow;
  TConnectionRow = record
    link, senderId, senderPort, receiverId, receiverPort: cint32;
  end;

  PSpecificationRow = ^TSpecificationRow;
  TSpecificationRow = record
    host0, host1, brand, host3, select1, select2, number, value, host8: cfloat;
  end;

  PSeriesEntry = ^TSeriesEntry;
  TSeriesEntry = record
    id: cint32;
    Value: pcfloat;
  end;

  PSignalSeriesEntry = ^TSignalSeriesEntry;
  TSignalSeriesEntry = record
    id: cint32;
    Signal: PSignal;
  end;

  PSplitEntry = ^TSplitEntry;
  TSplitEntry = record
    id: cint32;
    nMembers: cint32;
    members: pcint32;
    beta: cfloat;
  end;

  PAUEglobals = ^TAUEglobals;
  TAUEglobals = record
    StartTime: cint32;
    nSteps: cint32;
    TimeStep: cfloat;
    Latitude: cfloat;
    StopOnInfeas: cint32;
    BuildTree: cint32;
    CurStep: cint32;
    PotCompIds: pcint32;
    nPotComps: cint32;
    TechSpecs: PSpecificationRow;
    nTechSpecs: cint32;
    Net_Compnt: PComponentRow;
    nComps: cint32;
    Net_Conn: PConnectionRow;
    nConns: cint32;
    FreqSer: PSeriesEntry;
    nFreqSer: cint32;
    Rainfall: PSeriesEntry;
    nRainfall: cint32;
    Temp: PSeriesEntry;
    nTemp: cint32;
    Tmin: PSeriesEntry;
    nTmin: cint32;
    Tmax: PSeriesEntry;
    nTmax: cint32;
    Wind: PSeriesEntry;
    nWind: cint32;
    Multpls: PSeriesEntry;
    nMultpls: cint32;
    Threshold: PSeriesEntry;
    nThreshold: cint32;
    Occup: PSeriesEntry;
    nOccup: cint32;
    Dmdflct: PSeriesEntry;
    nDmdflct: cint32;
    InsDmd: PSeriesEntry;
    nInsDmd: cint32;
    WatQuant: PSeriesEntry;
    nWatQuant: cint32;
    WatQual: PSeriesEntry;
    nWatQual: cint32;
    nSplits: cint32; { the one count that stands before its table }
    Splits: PSplitEntry;
    Logs: PSignalSeriesEntry;
    nLogs: cint32;
    WatBod: PSignalSeriesEntry;
    nWatBod: cint32;
    NrgPot: PSeriesEntry;
    InfPot: PSeriesEntry;
    LosPot: PSeriesEntry;
    EvaPot: PSeriesEntry;
    CapPot: PSeriesEntry;
    OprPot: PSeriesEntry;
    ErrMsg: array[0..255] of AnsiChar;
    ErrFlag: cint32;
  end;

function KESTO_simul(Globals: PAUEglobals; first, last: cint32): cint32; cdecl; external 'KESTO';
procedure FreeAUEglobals(Globals: PAUEglobals); cdecl; external 'KESTO';

implementation

end.
