{ A host in Free Pascal: a roof fills a tank that a garden draws from, for eight days.

    fpc -Flbuild/release -k-rpath -kbuild/release -FUbuild -obuild/pascal-host hosts/pascal/host.pas
    build/pascal-host }
program host;

{$mode objfpc}{$packrecords c}

uses ctypes, math, kesto;

const
  Days = 8;
  Group = 1; Roof = 11; Tank = 12; Garden = 13; Mains = 14; Spill = 15;
  Roofing = 1; NoCost = 2; NoSuchBrand = 9;

var
  Rain: array[0..Days - 1] of cfloat = (10, 0, 0, 2.5, 20, 0, 0, 0); { mm }
  Demand: array[0..Days - 1] of cfloat = (200, 200, 200, 200, 200, 200, 200, 200);
  Stored: array[0..Days - 1] of cfloat = (100, 0, 0, 0, 0, 0, 0, 0); { 100 L to begin with; the library writes over it }

  Components: array[0..4] of TComponentRow = (
    (id: Roof; techid: 28; key: Group; brand: Roofing; size: 80),  { square metres }
    (id: Garden; techid: 45; key: Group; brand: 0; size: 100),     { percent of its demand }
    (id: Tank; techid: 32; key: Group; brand: NoCost; size: 500),  { L }
    (id: Mains; techid: 26; key: 0; brand: 0; size: 0),            { loggers }
    (id: Spill; techid: 26; key: 0; brand: 0; size: 0));
  Connections: array[0..3] of TConnectionRow = (
    (link: 1; senderId: Roof; senderPort: 1; receiverId: Tank; receiverPort: 1),
    (link: 2; senderId: Garden; senderPort: 1; receiverId: Tank; receiverPort: 2),
    (link: 3; senderId: Tank; senderPort: 1; receiverId: Mains; receiverPort: 1), { what the tank could not give }
    (link: 4; senderId: Tank; senderPort: 2; receiverId: Spill; receiverPort: 1));
  Specifications: array[0..3] of TSpecificationRow;
  Groups: array[0..0] of cint32 = (Group);
  Rainfall, Demands, Storages: TSeriesEntry;
  Globals: TAUEglobals;
  Status: cint32;

function Specification(Brand, Number: cint32; Value: cfloat): TSpecificationRow;
begin
  FillChar(Result, SizeOf(Result), 0);
  Result.brand := Brand;
  Result.select1 := 1;
  Result.select2 := 1;
  Result.number := Number;
  Result.value := Value;
end;

function Series(Id: cint32; Values: pcfloat): TSeriesEntry;
begin
  Result.id := Id;
  Result.Value := Values;
end;

procedure Fill;
begin
  Specifications[0] := Specification(Roofing, 25, 5);    { quality of the runoff }
  Specifications[1] := Specification(Roofing, 27, 0.1);  { share that wets the roof and evaporates }
  Specifications[2] := Specification(NoCost, 12, 0);
  Specifications[3] := Specification(NoCost, 13, 0);
  Rainfall := Series(Group, @Rain[0]);
  Demands := Series(Garden, @Demand[0]);
  Storages := Series(Tank, @Stored[0]);
  FillChar(Globals, SizeOf(Globals), 0);
  Globals.nSteps := Days;
  Globals.TimeStep := 1;
  Globals.Net_Compnt := @Components[0];
  Globals.nComps := Length(Components);
  Globals.Net_Conn := @Connections[0];
  Globals.nConns := Length(Connections);
  Globals.TechSpecs := @Specifications[0];
  Globals.nTechSpecs := Length(Specifications);
  Globals.PotCompIds := @Groups[0];
  Globals.nPotComps := 1;
  Globals.Rainfall := @Rainfall;
  Globals.nRainfall := 1;
  Globals.InsDmd := @Demands;
  Globals.nInsDmd := 1;
  Globals.WatQuant := @Storages;
  Globals.nWatQuant := 1;
end;

procedure Print;
var
  K: Integer;
begin
  WriteLn('day  rain mm  stored L   mains L  spilt L  evaporated L');
  for K := 0 to Days - 1 do
    WriteLn(K + 1:3, ' ', Rain[K]:8:1, ' ', Stored[K]:9:1, ' ', Globals.Logs[0].Signal[K].quantity:9:1, ' ',
      Globals.Logs[1].Signal[K].quantity + 0.0:8:1, { turns the -0 of a dry day into 0 }
      ' ', Globals.EvaPot[0].Value[K]:13:1);
end;

begin
  { C code computes with NaN and infinity; Pascal would have the processor stop at them. }
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  Fill;
  if ParamStr(1) = 'broken' then
    Components[0].brand := NoSuchBrand;
  Status := KESTO_simul(@Globals, 1, Days);
  if Status = KESTO_SUCCESS then
    Print
  else
    WriteLn(StdErr, 'KESTO: ', PAnsiChar(@Globals.ErrMsg[0]), ' (status ', Status, ')');
  FreeAUEglobals(@Globals);
  if Status <> KESTO_SUCCESS then
    Halt(1);
end.
