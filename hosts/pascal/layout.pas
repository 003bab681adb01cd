{ Prints sizes and offsets of all that host and library share, one a line, as tests/abi compares them. }
program layout;

{$mode objfpc}{$packrecords c}

uses kesto;

var
  Base: PByte;
  Prefix: string;

  Signal_: TSignal;
  ComponentRow_: TComponentRow;
  ConnectionRow_: TConnectionRow;
  SpecificationRow_: TSpecificationRow;
  SeriesEntry_: TSeriesEntry;
  SignalSeriesEntry_: TSignalSeriesEntry;
  SplitEntry_: TSplitEntry;
  AUEglobals_: TAUEglobals;

procedure Start(const Name: string; Place: Pointer; Size: SizeInt);
begin
  Base := Place;
  Prefix := Name;
  WriteLn(Name, ' size ', Size);
end;

procedure Field(const Name: string; Place: Pointer; Size: SizeInt);
begin
  WriteLn(Prefix, '.', Name, ' ', PByte(Place) - Base, ' ', Size);
end;

begin
  Start('Signal', @Signal_, SizeOf(Signal_));
  Field('quantity', @Signal_.quantity, SizeOf(Signal_.quantity));
  Field('quality', @Signal_.quality, SizeOf(Signal_.quality));
  Start('ComponentRow', @ComponentRow_, SizeOf(ComponentRow_));
  Field('id', @ComponentRow_.id, SizeOf(ComponentRow_.id));
  Field('techid', @ComponentRow_.techid, SizeOf(ComponentRow_.techid));
  Field('key', @ComponentRow_.key, SizeOf(ComponentRow_.key));
  Field('brand', @ComponentRow_.brand, SizeOf(ComponentRow_.brand));
  Field('size', @ComponentRow_.size, SizeOf(ComponentRow_.size));
  Start('ConnectionRow', @ConnectionRow_, SizeOf(ConnectionRow_));
  Field('link', @ConnectionRow_.link, SizeOf(ConnectionRow_.link));
  Field('senderId', @ConnectionRow_.senderId, SizeOf(ConnectionRow_.senderId));
  Field('senderPort', @ConnectionRow_.senderPort, SizeOf(ConnectionRow_.senderPort));
  Field('receiverId', @ConnectionRow_.receiverId, SizeOf(ConnectionRow_.receiverId));
  Field('receiverPort', @ConnectionRow_.receiverPort, SizeOf(ConnectionRow_.receiverPort));
  Start('SpecificationRow', @SpecificationRow_, SizeOf(SpecificationRow_));
  Field('host0', @SpecificationRow_.host0, SizeOf(SpecificationRow_.host0));
  Field('host1', @SpecificationRow_.host1, SizeOf(SpecificationRow_.host1));
  Field('brand', @SpecificationRow_.brand, SizeOf(SpecificationRow_.brand));
  Field('host3', @SpecificationRow_.host3, SizeOf(SpecificationRow_.host3));
  Field('select1', @SpecificationRow_.select1, SizeOf(SpecificationRow_.select1));
  Field('select2', @SpecificationRow_.select2, SizeOf(SpecificationRow_.select2));
  Field('number', @SpecificationRow_.number, SizeOf(SpecificationRow_.number));
  Field('value', @SpecificationRow_.value, SizeOf(SpecificationRow_.value));
  Field('host8', @SpecificationRow_.host8, SizeOf(SpecificationRow_.host8));
  Start('SeriesEntry', @SeriesEntry_, SizeOf(SeriesEntry_));
  Field('id', @SeriesEntry_.id, SizeOf(SeriesEntry_.id));
  Field('Value', @SeriesEntry_.Value, SizeOf(SeriesEntry_.Value));
  Start('SignalSeriesEntry', @SignalSeriesEntry_, SizeOf(SignalSeriesEntry_));
  Field('id', @SignalSeriesEntry_.id, SizeOf(SignalSeriesEntry_.id));
  Field('Signal', @SignalSeriesEntry_.Signal, SizeOf(SignalSeriesEntry_.Signal));
  Start('SplitEntry', @SplitEntry_, SizeOf(SplitEntry_));
  Field('id', @SplitEntry_.id, SizeOf(SplitEntry_.id));
  Field('nMembers', @SplitEntry_.nMembers, SizeOf(SplitEntry_.nMembers));
  Field('members', @SplitEntry_.members, SizeOf(SplitEntry_.members));
  Field('beta', @SplitEntry_.beta, SizeOf(SplitEntry_.beta));
  Start('AUEglobals', @AUEglobals_, SizeOf(AUEglobals_));
  Field('StartTime', @AUEglobals_.StartTime, SizeOf(AUEglobals_.StartTime));
  Field('nSteps', @AUEglobals_.nSteps, SizeOf(AUEglobals_.nSteps));
  Field('TimeStep', @AUEglobals_.TimeStep, SizeOf(AUEglobals_.TimeStep));
  Field('Latitude', @AUEglobals_.Latitude, SizeOf(AUEglobals_.Latitude));
  Field('StopOnInfeas', @AUEglobals_.StopOnInfeas, SizeOf(AUEglobals_.StopOnInfeas));
  Field('BuildTree', @AUEglobals_.BuildTree, SizeOf(AUEglobals_.BuildTree));
  Field('CurStep', @AUEglobals_.CurStep, SizeOf(AUEglobals_.CurStep));
  Field('PotCompIds', @AUEglobals_.PotCompIds, SizeOf(AUEglobals_.PotCompIds));
  Field('nPotComps', @AUEglobals_.nPotComps, SizeOf(AUEglobals_.nPotComps));
  Field('TechSpecs', @AUEglobals_.TechSpecs, SizeOf(AUEglobals_.TechSpecs));
  Field('nTechSpecs', @AUEglobals_.nTechSpecs, SizeOf(AUEglobals_.nTechSpecs));
  Field('Net_Compnt', @AUEglobals_.Net_Compnt, SizeOf(AUEglobals_.Net_Compnt));
  Field('nComps', @AUEglobals_.nComps, SizeOf(AUEglobals_.nComps));
  Field('Net_Conn', @AUEglobals_.Net_Conn, SizeOf(AUEglobals_.Net_Conn));
  Field('nConns', @AUEglobals_.nConns, SizeOf(AUEglobals_.nConns));
  Field('FreqSer', @AUEglobals_.FreqSer, SizeOf(AUEglobals_.FreqSer));
  Field('nFreqSer', @AUEglobals_.nFreqSer, SizeOf(AUEglobals_.nFreqSer));
  Field('Rainfall', @AUEglobals_.Rainfall, SizeOf(AUEglobals_.Rainfall));
  Field('nRainfall', @AUEglobals_.nRainfall, SizeOf(AUEglobals_.nRainfall));
  Field('Temp', @AUEglobals_.Temp, SizeOf(AUEglobals_.Temp));
  Field('nTemp', @AUEglobals_.nTemp, SizeOf(AUEglobals_.nTemp));
  Field('Tmin', @AUEglobals_.Tmin, SizeOf(AUEglobals_.Tmin));
  Field('nTmin', @AUEglobals_.nTmin, SizeOf(AUEglobals_.nTmin));
  Field('Tmax', @AUEglobals_.Tmax, SizeOf(AUEglobals_.Tmax));
  Field('nTmax', @AUEglobals_.nTmax, SizeOf(AUEglobals_.nTmax));
  Field('Wind', @AUEglobals_.Wind, SizeOf(AUEglobals_.Wind));
  Field('nWind', @AUEglobals_.nWind, SizeOf(AUEglobals_.nWind));
  Field('Multpls', @AUEglobals_.Multpls, SizeOf(AUEglobals_.Multpls));
  Field('nMultpls', @AUEglobals_.nMultpls, SizeOf(AUEglobals_.nMultpls));
  Field('Threshold', @AUEglobals_.Threshold, SizeOf(AUEglobals_.Threshold));
  Field('nThreshold', @AUEglobals_.nThreshold, SizeOf(AUEglobals_.nThreshold));
  Field('Occup', @AUEglobals_.Occup, SizeOf(AUEglobals_.Occup));
  Field('nOccup', @AUEglobals_.nOccup, SizeOf(AUEglobals_.nOccup));
  Field('Dmdflct', @AUEglobals_.Dmdflct, SizeOf(AUEglobals_.Dmdflct));
  Field('nDmdflct', @AUEglobals_.nDmdflct, SizeOf(AUEglobals_.nDmdflct));
  Field('InsDmd', @AUEglobals_.InsDmd, SizeOf(AUEglobals_.InsDmd));
  Field('nInsDmd', @AUEglobals_.nInsDmd, SizeOf(AUEglobals_.nInsDmd));
  Field('WatQuant', @AUEglobals_.WatQuant, SizeOf(AUEglobals_.WatQuant));
  Field('nWatQuant', @AUEglobals_.nWatQuant, SizeOf(AUEglobals_.nWatQuant));
  Field('WatQual', @AUEglobals_.WatQual, SizeOf(AUEglobals_.WatQual));
  Field('nWatQual', @AUEglobals_.nWatQual, SizeOf(AUEglobals_.nWatQual));
  Field('nSplits', @AUEglobals_.nSplits, SizeOf(AUEglobals_.nSplits));
  Field('Splits', @AUEglobals_.Splits, SizeOf(AUEglobals_.Splits));
  Field('Logs', @AUEglobals_.Logs, SizeOf(AUEglobals_.Logs));
  Field('nLogs', @AUEglobals_.nLogs, SizeOf(AUEglobals_.nLogs));
  Field('WatBod', @AUEglobals_.WatBod, SizeOf(AUEglobals_.WatBod));
  Field('nWatBod', @AUEglobals_.nWatBod, SizeOf(AUEglobals_.nWatBod));
  Field('NrgPot', @AUEglobals_.NrgPot, SizeOf(AUEglobals_.NrgPot));
  Field('InfPot', @AUEglobals_.InfPot, SizeOf(AUEglobals_.InfPot));
  Field('LosPot', @AUEglobals_.LosPot, SizeOf(AUEglobals_.LosPot));
  Field('EvaPot', @AUEglobals_.EvaPot, SizeOf(AUEglobals_.EvaPot));
  Field('CapPot', @AUEglobals_.CapPot, SizeOf(AUEglobals_.CapPot));
  Field('OprPot', @AUEglobals_.OprPot, SizeOf(AUEglobals_.OprPot));
  Field('ErrMsg', @AUEglobals_.ErrMsg, SizeOf(AUEglobals_.ErrMsg));
  Field('ErrFlag', @AUEglobals_.ErrFlag, SizeOf(AUEglobals_.ErrFlag));
end.
