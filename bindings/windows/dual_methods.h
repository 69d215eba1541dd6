// Made from the member table by interface_text; do not edit.
// clang-format off
#pragma once

#include "component/published.h"
#include "driver/clsKEL4x.h"
#include "driver/statistics/clsStatistics.h"
#include "host/register.h"
#include "qkel4x.h"

namespace component {

class IDriverSetupMethods : public Published<::IDriverSetup, host::IDriverSetup> {
 public:
  STDMETHODIMP get_Name(BSTR* result) override { return Give(result, [&] { return Target().Name(); }); }
  STDMETHODIMP put_Name(BSTR value) override { return Do([&] { Target().Name(com::Text(value)); }); }
  STDMETHODIMP get_Settings(IDispatch** result) override { return Give(result, [&] { return Target().Settings(); }); }
  STDMETHODIMP get_OnLine(VARIANT_BOOL* result) override { return Give(result, [&] { return Target().OnLine(); }); }
  STDMETHODIMP put_OnLine(VARIANT_BOOL value) override { return Do([&] { Target().OnLine(value != VARIANT_FALSE); }); }
};

class IDriverIdentifyMethods : public Published<::IDriverIdentify, host::IDriverIdentify> {
 public:
  STDMETHODIMP get_Manufacturer(BSTR* result) override { return Give(result, [&] { return Target().Manufacturer(); }); }
  STDMETHODIMP get_ModelNumber(BSTR* result) override { return Give(result, [&] { return Target().ModelNumber(); }); }
  STDMETHODIMP get_SerialNumber(BSTR* result) override { return Give(result, [&] { return Target().SerialNumber(); }); }
  STDMETHODIMP get_FirmwareVersion(BSTR* result) override { return Give(result, [&] { return Target().FirmwareVersion(); }); }
  STDMETHODIMP get_InstalledHardware(BSTR* result) override { return Give(result, [&] { return Target().InstalledHardware(); }); }
};

class IRegisterMethods : public Published<::IRegister, host::IRegister> {
 public:
  STDMETHODIMP GetClassDescription(BSTR* result) override { return Give(result, [&] { return Target().GetClassDescription(); }); }
  STDMETHODIMP GetClassName(BSTR* result) override { return Give(result, [&] { return Target().GetClassName(); }); }
};

class clsStatisticsMethods : public Published<::_clsStatistics, qkel4x::clsStatistics> {
 public:
  STDMETHODIMP put_Statistics(BSTR value) override { return Do([&] { Target().Statistics(com::Text(value)); }); }
  STDMETHODIMP get_Statistics(BSTR* result) override { return Give(result, [&] { return Target().Statistics(); }); }
  STDMETHODIMP get_MonitoringTime(DATE* result) override { return Give(result, [&] { return Target().MonitoringTime(); }); }
  STDMETHODIMP get_Level(DATE* result) override { return Give(result, [&] { return Target().Level(); }); }
  STDMETHODIMP get_MpegTsSync(DATE* result) override { return Give(result, [&] { return Target().MpegTsSync(); }); }
  STDMETHODIMP get_MerDb(DATE* result) override { return Give(result, [&] { return Target().MerDb(); }); }
  STDMETHODIMP get_EvmMerPercent(DATE* result) override { return Give(result, [&] { return Target().EvmMerPercent(); }); }
  STDMETHODIMP get_BerBeforeRs(DATE* result) override { return Give(result, [&] { return Target().BerBeforeRs(); }); }
  STDMETHODIMP get_MpegDataError(DATE* result) override { return Give(result, [&] { return Target().MpegDataError(); }); }
  STDMETHODIMP get_CorrCntBeforeRs(double* result) override { return Give(result, [&] { return Target().CorrCntBeforeRs(); }); }
  STDMETHODIMP get_MpegDataErrorCntAfterRs(double* result) override { return Give(result, [&] { return Target().MpegDataErrorCntAfterRs(); }); }
};

class clsRegisterMethods : public Published<::_clsRegister, host::IRegister> {
 public:
  STDMETHODIMP IRegister_GetClassDescription(BSTR* result) override { return Give(result, [&] { return Target().GetClassDescription(); }); }
  STDMETHODIMP IRegister_GetClassName(BSTR* result) override { return Give(result, [&] { return Target().GetClassName(); }); }
};

class clsKEL4xMethods : public Published<::_clsKEL4x, qkel4x::clsKEL4x> {
 public:
  STDMETHODIMP get_ResponseString(VARIANT* result) override { return Give(result, [&] { return Target().ResponseString(); }); }
  STDMETHODIMP get_Prefix(VARIANT* result) override { return Give(result, [&] { return Target().Prefix(); }); }
  STDMETHODIMP get_Postfix(VARIANT* result) override { return Give(result, [&] { return Target().Postfix(); }); }
  STDMETHODIMP Reset() override { return Do([&] { Target().Reset(); }); }
  STDMETHODIMP get_Identity(BSTR* result) override { return Give(result, [&] { return Target().Identity(); }); }
  STDMETHODIMP get_Manufacturer(BSTR* result) override { return Give(result, [&] { return Target().Manufacturer(); }); }
  STDMETHODIMP get_ModelNumber(BSTR* result) override { return Give(result, [&] { return Target().ModelNumber(); }); }
  STDMETHODIMP get_SerialNumber(BSTR* result) override { return Give(result, [&] { return Target().SerialNumber(); }); }
  STDMETHODIMP get_FirmwareVersion(BSTR* result) override { return Give(result, [&] { return Target().FirmwareVersion(); }); }
  STDMETHODIMP get_InstalledHardware(BSTR* result) override { return Give(result, [&] { return Target().InstalledHardware(); }); }
  STDMETHODIMP get_AlarmStatistics(::_clsStatistics** result) override { return Give(result, [&] { return Target().AlarmStatistics(); }); }
  STDMETHODIMP AlarmRegisterClear() override { return Do([&] { Target().AlarmRegisterClear(); }); }
  STDMETHODIMP get_Mode(::KelModes* result) override { return Give(result, [&] { return Target().Mode(); }); }
  STDMETHODIMP put_Mode(::KelModes value) override { return Do([&] { Target().Mode(static_cast<qkel4x::KelModes>(value)); }); }
  STDMETHODIMP get_MeasureMode(::KelMeasureModes* result) override { return Give(result, [&] { return Target().MeasureMode(); }); }
  STDMETHODIMP put_MeasureMode(::KelMeasureModes value) override { return Do([&] { Target().MeasureMode(static_cast<qkel4x::KelMeasureModes>(value)); }); }
  STDMETHODIMP get_InputPort(::KelInputPorts* result) override { return Give(result, [&] { return Target().InputPort(); }); }
  STDMETHODIMP put_InputPort(::KelInputPorts value) override { return Do([&] { Target().InputPort(static_cast<qkel4x::KelInputPorts>(value)); }); }
  STDMETHODIMP get_InputAttenuation_Receiver(::KelInputAttenuations* result) override { return Give(result, [&] { return Target().InputAttenuation_Receiver(); }); }
  STDMETHODIMP put_InputAttenuation_Receiver(::KelInputAttenuations value) override { return Do([&] { Target().InputAttenuation_Receiver(static_cast<qkel4x::KelInputAttenuations>(value)); }); }
  STDMETHODIMP get_InputAttenuation(::KelInputAttenuations* result) override { return Give(result, [&] { return Target().InputAttenuation(); }); }
  STDMETHODIMP put_InputAttenuation(::KelInputAttenuations value) override { return Do([&] { Target().InputAttenuation(static_cast<qkel4x::KelInputAttenuations>(value)); }); }
  STDMETHODIMP get_InputAttenuationValue_Receiver(::KelInputAttenuations* result) override { return Give(result, [&] { return Target().InputAttenuationValue_Receiver(); }); }
  STDMETHODIMP get_InputAttenuationValue(::KelInputAttenuations* result) override { return Give(result, [&] { return Target().InputAttenuationValue(); }); }
  STDMETHODIMP get_InputAttenuationMode_Receiver(::KelRxAttenModes* result) override { return Give(result, [&] { return Target().InputAttenuationMode_Receiver(); }); }
  STDMETHODIMP put_InputAttenuationMode_Receiver(::KelRxAttenModes value) override { return Do([&] { Target().InputAttenuationMode_Receiver(static_cast<qkel4x::KelRxAttenModes>(value)); }); }
  STDMETHODIMP get_InputAttenuation_Demod(::KelDemodAttenuations* result) override { return Give(result, [&] { return Target().InputAttenuation_Demod(); }); }
  STDMETHODIMP put_InputAttenuation_Demod(::KelDemodAttenuations value) override { return Do([&] { Target().InputAttenuation_Demod(static_cast<qkel4x::KelDemodAttenuations>(value)); }); }
  STDMETHODIMP get_InputAttenuationValue_Demod(::KelDemodAttenVals* result) override { return Give(result, [&] { return Target().InputAttenuationValue_Demod(); }); }
  STDMETHODIMP get_SpecFuncLoopAgc(::KelSpecFuncLoopAgcs* result) override { return Give(result, [&] { return Target().SpecFuncLoopAgc(); }); }
  STDMETHODIMP put_SpecFuncLoopAgc(::KelSpecFuncLoopAgcs value) override { return Do([&] { Target().SpecFuncLoopAgc(static_cast<qkel4x::KelSpecFuncLoopAgcs>(value)); }); }
  STDMETHODIMP get_SpecFuncLoopBandwidth(::KelSpecFuncLoopBandwidths* result) override { return Give(result, [&] { return Target().SpecFuncLoopBandwidth(); }); }
  STDMETHODIMP put_SpecFuncLoopBandwidth(::KelSpecFuncLoopBandwidths value) override { return Do([&] { Target().SpecFuncLoopBandwidth(static_cast<qkel4x::KelSpecFuncLoopBandwidths>(value)); }); }
  STDMETHODIMP get_SpecFuncLoopBaudBandwidth(::KelSpecFuncLoopBandwidths* result) override { return Give(result, [&] { return Target().SpecFuncLoopBaudBandwidth(); }); }
  STDMETHODIMP put_SpecFuncLoopBaudBandwidth(::KelSpecFuncLoopBandwidths value) override { return Do([&] { Target().SpecFuncLoopBaudBandwidth(static_cast<qkel4x::KelSpecFuncLoopBandwidths>(value)); }); }
  STDMETHODIMP get_SpecFuncMinBerIntegration(::KelSpecFuncMinBerIntegrations* result) override { return Give(result, [&] { return Target().SpecFuncMinBerIntegration(); }); }
  STDMETHODIMP put_SpecFuncMinBerIntegration(::KelSpecFuncMinBerIntegrations value) override { return Do([&] { Target().SpecFuncMinBerIntegration(static_cast<qkel4x::KelSpecFuncMinBerIntegrations>(value)); }); }
  STDMETHODIMP get_SpecFuncEqualizer(::KelSpecFuncEqualizers* result) override { return Give(result, [&] { return Target().SpecFuncEqualizer(); }); }
  STDMETHODIMP put_SpecFuncEqualizer(::KelSpecFuncEqualizers value) override { return Do([&] { Target().SpecFuncEqualizer(static_cast<qkel4x::KelSpecFuncEqualizers>(value)); }); }
  STDMETHODIMP get_SpecFuncEqualizerMode(::KelSpecFuncEqualizerModes* result) override { return Give(result, [&] { return Target().SpecFuncEqualizerMode(); }); }
  STDMETHODIMP put_SpecFuncEqualizerMode(::KelSpecFuncEqualizerModes value) override { return Do([&] { Target().SpecFuncEqualizerMode(static_cast<qkel4x::KelSpecFuncEqualizerModes>(value)); }); }
  STDMETHODIMP get_SpecFuncEqualizerAdaptation(::KelSpecFuncEqualizerAdaptations* result) override { return Give(result, [&] { return Target().SpecFuncEqualizerAdaptation(); }); }
  STDMETHODIMP put_SpecFuncEqualizerAdaptation(::KelSpecFuncEqualizerAdaptations value) override { return Do([&] { Target().SpecFuncEqualizerAdaptation(static_cast<qkel4x::KelSpecFuncEqualizerAdaptations>(value)); }); }
  STDMETHODIMP get_SpecFuncFreqRfFixed(::KelSpecFuncFreqRfFixed* result) override { return Give(result, [&] { return Target().SpecFuncFreqRfFixed(); }); }
  STDMETHODIMP put_SpecFuncFreqRfFixed(::KelSpecFuncFreqRfFixed value) override { return Do([&] { Target().SpecFuncFreqRfFixed(static_cast<qkel4x::KelSpecFuncFreqRfFixed>(value)); }); }
  STDMETHODIMP get_SpecFuncFreqSidePos(::KelSpecFuncFreqSidePos* result) override { return Give(result, [&] { return Target().SpecFuncFreqSidePos(); }); }
  STDMETHODIMP put_SpecFuncFreqSidePos(::KelSpecFuncFreqSidePos value) override { return Do([&] { Target().SpecFuncFreqSidePos(static_cast<qkel4x::KelSpecFuncFreqSidePos>(value)); }); }
  STDMETHODIMP get_StatusSawFilterBW(::KelStatusSawFilterBWs* result) override { return Give(result, [&] { return Target().StatusSawFilterBW(); }); }
  STDMETHODIMP put_StatusSawFilterBW(::KelStatusSawFilterBWs value) override { return Do([&] { Target().StatusSawFilterBW(static_cast<qkel4x::KelStatusSawFilterBWs>(value)); }); }
  STDMETHODIMP get_Setup10MhzRef(::KelReferenceSources* result) override { return Give(result, [&] { return Target().Setup10MhzRef(); }); }
  STDMETHODIMP put_Setup10MhzRef(::KelReferenceSources value) override { return Do([&] { Target().Setup10MhzRef(static_cast<qkel4x::KelReferenceSources>(value)); }); }
  STDMETHODIMP get_SetupLevelUnit(::KelSetupLevelUnits* result) override { return Give(result, [&] { return Target().SetupLevelUnit(); }); }
  STDMETHODIMP put_SetupLevelUnit(::KelSetupLevelUnits value) override { return Do([&] { Target().SetupLevelUnit(static_cast<qkel4x::KelSetupLevelUnits>(value)); }); }
  STDMETHODIMP get_StatusRejFilter(::KelSwitchStates* result) override { return Give(result, [&] { return Target().StatusRejFilter(); }); }
  STDMETHODIMP put_StatusRejFilter(::KelSwitchStates value) override { return Do([&] { Target().StatusRejFilter(static_cast<qkel4x::KelSwitchStates>(value)); }); }
  STDMETHODIMP get_StatusRejFilterNotchWidth(::KelStatusRejFilterNotchWidths* result) override { return Give(result, [&] { return Target().StatusRejFilterNotchWidth(); }); }
  STDMETHODIMP put_StatusRejFilterNotchWidth(::KelStatusRejFilterNotchWidths value) override { return Do([&] { Target().StatusRejFilterNotchWidth(static_cast<qkel4x::KelStatusRejFilterNotchWidths>(value)); }); }
  STDMETHODIMP get_InputAttenHighAdjChanPower(::KelSwitchStates* result) override { return Give(result, [&] { return Target().InputAttenHighAdjChanPower(); }); }
  STDMETHODIMP put_InputAttenHighAdjChanPower(::KelSwitchStates value) override { return Do([&] { Target().InputAttenHighAdjChanPower(static_cast<qkel4x::KelSwitchStates>(value)); }); }
  STDMETHODIMP get_ReferenceLocked(VARIANT_BOOL* result) override { return Give(result, [&] { return Target().ReferenceLocked(); }); }
  STDMETHODIMP get_StateSignal(VARIANT_BOOL* result) override { return Give(result, [&] { return Target().StateSignal(); }); }
  STDMETHODIMP get_RfCenterFrequency(double* result) override { return Give(result, [&] { return Target().RfCenterFrequency(); }); }
  STDMETHODIMP put_RfCenterFrequency(double value) override { return Do([&] { Target().RfCenterFrequency(value); }); }
  STDMETHODIMP get_RfPilotFrequency(double* result) override { return Give(result, [&] { return Target().RfPilotFrequency(); }); }
  STDMETHODIMP put_RfPilotFrequency(double value) override { return Do([&] { Target().RfPilotFrequency(value); }); }
  STDMETHODIMP get_StatusSymbolRate(double* result) override { return Give(result, [&] { return Target().StatusSymbolRate(); }); }
  STDMETHODIMP put_StatusSymbolRate(double value) override { return Do([&] { Target().StatusSymbolRate(value); }); }
  STDMETHODIMP get_StatusRejFilterNotchFreq(double* result) override { return Give(result, [&] { return Target().StatusRejFilterNotchFreq(); }); }
  STDMETHODIMP put_StatusRejFilterNotchFreq(double value) override { return Do([&] { Target().StatusRejFilterNotchFreq(value); }); }
  STDMETHODIMP get_SetupTime(DATE* result) override { return Give(result, [&] { return Target().SetupTime(); }); }
  STDMETHODIMP put_SetupTime(DATE value) override { return Do([&] { Target().SetupTime(qkel4x::DateTime{value}); }); }
  STDMETHODIMP get_SetupDate(DATE* result) override { return Give(result, [&] { return Target().SetupDate(); }); }
  STDMETHODIMP put_SetupDate(DATE value) override { return Do([&] { Target().SetupDate(qkel4x::DateTime{value}); }); }
  STDMETHODIMP get_MeasureTsBitrate(double* result) override { return Give(result, [&] { return Target().MeasureTsBitrate(); }); }
  STDMETHODIMP get_MeasureTdCcdfCrestFactorMargin(double* result) override { return Give(result, [&] { return Target().MeasureTdCcdfCrestFactorMargin(); }); }
  STDMETHODIMP get_MeasureTdCcdfCrestFactorMax(double* result) override { return Give(result, [&] { return Target().MeasureTdCcdfCrestFactorMax(); }); }
  STDMETHODIMP get_MeasureTdCcdfCrestFactorCurrent(double* result) override { return Give(result, [&] { return Target().MeasureTdCcdfCrestFactorCurrent(); }); }
  STDMETHODIMP get_MeasureTdCrestFactorAqu(short* result) override { return Give(result, [&] { return Target().MeasureTdCrestFactorAqu(); }); }
  STDMETHODIMP get_MeasureTdCcdfPapr(double* result) override { return Give(result, [&] { return Target().MeasureTdCcdfPapr(); }); }
  STDMETHODIMP get_MeasureTdCcdfPaprDelta(double* result) override { return Give(result, [&] { return Target().MeasureTdCcdfPaprDelta(); }); }
  STDMETHODIMP get_MeasureFdSpectrumAverage(short* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumAverage(); }); }
  STDMETHODIMP get_MeasureFdSpectrumShoulderLower(double* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumShoulderLower(); }); }
  STDMETHODIMP get_MeasureFdSpectrumShoulderUpper(double* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumShoulderUpper(); }); }
  STDMETHODIMP get_MeasurePilotFreqOffset(double* result) override { return Give(result, [&] { return Target().MeasurePilotFreqOffset(); }); }
  STDMETHODIMP get_MeasureRfLevel(double* result) override { return Give(result, [&] { return Target().MeasureRfLevel(); }); }
  STDMETHODIMP get_MeasureVsbMerRmsDb(double* result) override { return Give(result, [&] { return Target().MeasureVsbMerRmsDb(); }); }
  STDMETHODIMP get_MeasureVsbMerRmsPct(double* result) override { return Give(result, [&] { return Target().MeasureVsbMerRmsPct(); }); }
  STDMETHODIMP get_MeasureVsbMerPeakPct(double* result) override { return Give(result, [&] { return Target().MeasureVsbMerPeakPct(); }); }
  STDMETHODIMP get_MeasureVsbEvmPeak(double* result) override { return Give(result, [&] { return Target().MeasureVsbEvmPeak(); }); }
  STDMETHODIMP get_MeasureVsbEvmRms(double* result) override { return Give(result, [&] { return Target().MeasureVsbEvmRms(); }); }
  STDMETHODIMP get_MeasureSymbolRateOffset(double* result) override { return Give(result, [&] { return Target().MeasureSymbolRateOffset(); }); }
  STDMETHODIMP get_MeasureVsbPhaseJitter(double* result) override { return Give(result, [&] { return Target().MeasureVsbPhaseJitter(); }); }
  STDMETHODIMP get_MeasureVsbSignalToNoiseRatio(double* result) override { return Give(result, [&] { return Target().MeasureVsbSignalToNoiseRatio(); }); }
  STDMETHODIMP MeasureResetBer() override { return Do([&] { Target().MeasureResetBer(); }); }
  STDMETHODIMP get_MeasureBerBeforeRS(double* result) override { return Give(result, [&] { return Target().MeasureBerBeforeRS(); }); }
  STDMETHODIMP get_MeasureBerAfterRS(double* result) override { return Give(result, [&] { return Target().MeasureBerAfterRS(); }); }
  STDMETHODIMP get_MeasureCarrierLoopOutOfLock(VARIANT_BOOL* result) override { return Give(result, [&] { return Target().MeasureCarrierLoopOutOfLock(); }); }
  STDMETHODIMP get_MeasureMpegTsUnSync(VARIANT_BOOL* result) override { return Give(result, [&] { return Target().MeasureMpegTsUnSync(); }); }
  STDMETHODIMP get_MeasureSegErrRatio(double* result) override { return Give(result, [&] { return Target().MeasureSegErrRatio(); }); }
  STDMETHODIMP get_MeasureSegErrPerSec(long* result) override { return Give(result, [&] { return Target().MeasureSegErrPerSec(); }); }
  STDMETHODIMP get_MeasureVsbPvPilotValue(double* result) override { return Give(result, [&] { return Target().MeasureVsbPvPilotValue(); }); }
  STDMETHODIMP get_MeasureVsbPvAmplErr(double* result) override { return Give(result, [&] { return Target().MeasureVsbPvAmplErr(); }); }
  STDMETHODIMP get_MeasureVsbPvSigPilotRatio(double* result) override { return Give(result, [&] { return Target().MeasureVsbPvSigPilotRatio(); }); }
  STDMETHODIMP get_MeasureCdAddNoise(::KelSwitchStates* result) override { return Give(result, [&] { return Target().MeasureCdAddNoise(); }); }
  STDMETHODIMP put_MeasureCdAddNoise(::KelSwitchStates value) override { return Do([&] { Target().MeasureCdAddNoise(static_cast<qkel4x::KelSwitchStates>(value)); }); }
  STDMETHODIMP get_MeasureCdAddNoiseCn(double* result) override { return Give(result, [&] { return Target().MeasureCdAddNoiseCn(); }); }
  STDMETHODIMP put_MeasureCdAddNoiseCn(double value) override { return Do([&] { Target().MeasureCdAddNoiseCn(value); }); }
  STDMETHODIMP get_MeasureNoiseGenerator(double* result) override { return Give(result, [&] { return Target().MeasureNoiseGenerator(); }); }
  STDMETHODIMP put_MeasureNoiseGenerator(double value) override { return Do([&] { Target().MeasureNoiseGenerator(value); }); }
  STDMETHODIMP get_MeasureCdSymbolCount(long* result) override { return Give(result, [&] { return Target().MeasureCdSymbolCount(); }); }
  STDMETHODIMP put_MeasureCdSymbolCount(long value) override { return Do([&] { Target().MeasureCdSymbolCount(value); }); }
  STDMETHODIMP get_MeasureFdSpectrumAverageCount(short* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumAverageCount(); }); }
  STDMETHODIMP put_MeasureFdSpectrumAverageCount(short value) override { return Do([&] { Target().MeasureFdSpectrumAverageCount(value); }); }
  STDMETHODIMP get_MeasureFdSpectrumDetector(::KelFdSpectrumDetectors* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumDetector(); }); }
  STDMETHODIMP put_MeasureFdSpectrumDetector(::KelFdSpectrumDetectors value) override { return Do([&] { Target().MeasureFdSpectrumDetector(static_cast<qkel4x::KelFdSpectrumDetectors>(value)); }); }
  STDMETHODIMP get_MeasureFdSpectrumStartFreq(double* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumStartFreq(); }); }
  STDMETHODIMP put_MeasureFdSpectrumStartFreq(double value) override { return Do([&] { Target().MeasureFdSpectrumStartFreq(value); }); }
  STDMETHODIMP get_MeasureFdSpectrumStopFreq(double* result) override { return Give(result, [&] { return Target().MeasureFdSpectrumStopFreq(); }); }
  STDMETHODIMP put_MeasureFdSpectrumStopFreq(double value) override { return Do([&] { Target().MeasureFdSpectrumStopFreq(value); }); }
  STDMETHODIMP get_MeasureTdEchoPatRange(::KelEchoPatternRanges* result) override { return Give(result, [&] { return Target().MeasureTdEchoPatRange(); }); }
  STDMETHODIMP put_MeasureTdEchoPatRange(::KelEchoPatternRanges value) override { return Do([&] { Target().MeasureTdEchoPatRange(static_cast<qkel4x::KelEchoPatternRanges>(value)); }); }
  STDMETHODIMP get_MeasureTdEchoPatNumValues(::KelSwitchStates* result) override { return Give(result, [&] { return Target().MeasureTdEchoPatNumValues(); }); }
  STDMETHODIMP put_MeasureTdEchoPatNumValues(::KelSwitchStates value) override { return Do([&] { Target().MeasureTdEchoPatNumValues(static_cast<qkel4x::KelSwitchStates>(value)); }); }
  STDMETHODIMP get_MeasureTdEchoPatScale(::KelEchoPatternScales* result) override { return Give(result, [&] { return Target().MeasureTdEchoPatScale(); }); }
  STDMETHODIMP put_MeasureTdEchoPatScale(::KelEchoPatternScales value) override { return Do([&] { Target().MeasureTdEchoPatScale(static_cast<qkel4x::KelEchoPatternScales>(value)); }); }
  STDMETHODIMP get_MeasureTdEmInterval(::KelEmIntervals* result) override { return Give(result, [&] { return Target().MeasureTdEmInterval(); }); }
  STDMETHODIMP put_MeasureTdEmInterval(::KelEmIntervals value) override { return Do([&] { Target().MeasureTdEmInterval(static_cast<qkel4x::KelEmIntervals>(value)); }); }
  STDMETHODIMP get_MeasureFdDetector(::KelFdDetectors* result) override { return Give(result, [&] { return Target().MeasureFdDetector(); }); }
  STDMETHODIMP put_MeasureFdDetector(::KelFdDetectors value) override { return Do([&] { Target().MeasureFdDetector(static_cast<qkel4x::KelFdDetectors>(value)); }); }
  STDMETHODIMP get_MeasureFdJitterApplication(::KelFdJitterApplications* result) override { return Give(result, [&] { return Target().MeasureFdJitterApplication(); }); }
  STDMETHODIMP put_MeasureFdJitterApplication(::KelFdJitterApplications value) override { return Do([&] { Target().MeasureFdJitterApplication(static_cast<qkel4x::KelFdJitterApplications>(value)); }); }
  STDMETHODIMP get_MeasureFdAmplitudeResponse(double* result) override { return Give(result, [&] { return Target().MeasureFdAmplitudeResponse(); }); }
  STDMETHODIMP get_MeasureFdPhaseResponse(double* result) override { return Give(result, [&] { return Target().MeasureFdPhaseResponse(); }); }
  STDMETHODIMP get_MeasureFdGroupDelayResponse(double* result) override { return Give(result, [&] { return Target().MeasureFdGroupDelayResponse(); }); }
  STDMETHODIMP MeasureTdGhostPattern() override { return Do([&] { Target().MeasureTdGhostPattern(); }); }
  STDMETHODIMP get_GhostPatternAtten(short* intNumber, double* result) override { return Give(result, [&] { return Target().GhostPatternAtten(Referenced(intNumber)); }); }
  STDMETHODIMP get_GhostPatternDelay(short* intNumber, double* result) override { return Give(result, [&] { return Target().GhostPatternDelay(Referenced(intNumber)); }); }
  STDMETHODIMP MeasureFdJitterAmplitude() override { return Do([&] { Target().MeasureFdJitterAmplitude(); }); }
  STDMETHODIMP MeasureFdJitterPhase() override { return Do([&] { Target().MeasureFdJitterPhase(); }); }
  STDMETHODIMP get_AmplitudeJitterValue(short* intNumber, double* result) override { return Give(result, [&] { return Target().AmplitudeJitterValue(Referenced(intNumber)); }); }
  STDMETHODIMP get_AmplitudeJitterFreq(short* intNumber, double* result) override { return Give(result, [&] { return Target().AmplitudeJitterFreq(Referenced(intNumber)); }); }
  STDMETHODIMP get_PhaseJitterValue(short* intNumber, double* result) override { return Give(result, [&] { return Target().PhaseJitterValue(Referenced(intNumber)); }); }
  STDMETHODIMP get_PhaseJitterFreq(short* intNumber, double* result) override { return Give(result, [&] { return Target().PhaseJitterFreq(Referenced(intNumber)); }); }
  STDMETHODIMP get_ScreenShot(::KelScreenShotModes udtMode, SAFEARRAY** bytBuffer, VARIANT_BOOL* result) override { return Give(result, [&] { return Replacing(bytBuffer, [&](auto& bytes) { return Target().ScreenShot(static_cast<qkel4x::KelScreenShotModes>(udtMode), bytes); }); }); }
};

}  // namespace component
