"""Made by scripts/python-interface from CMakeLists.txt, include/rt305_4/rt305_4.h and docs/schema/results.schema.json."""

from ctypes import POINTER, Structure, c_char_p, c_double, c_int16, c_int32, c_uint32, c_uint64, sizeof
from dataclasses import dataclass

PROJECT_VERSION = "1.0.0"
VERSION = "20230616.1500"
INPUT_VOLTAGES = 4
INPUT_CURRENTS = 8
INPUT_VOLTAGES_AND_CURRENTS = 21
OPERATION_PARAMETERS = 0
OPERATION_SIGNALS = 1
OPERATION_SPECTRUM = 2
OPERATION_DISTORTION = 3
KIND_VOLTAGE = 0
KIND_CURRENT = 1
PHASE_A = 0
PHASE_B = 1
PHASE_C = 2
MAX_SAMPLES = 2147483647
SPECTRUM_LEVEL_MASK = 0x00000006
SPECTRUM_LEVEL_LINEAR = 0x00000000
SPECTRUM_LEVEL_DB = 0x00000002
SPECTRUM_CRITERION = 0x00010000
SPECTRUM_WINDOW_MASK = 0x03000000
SPECTRUM_WINDOW_RECT = 0x00000000
SPECTRUM_WINDOW_HANN = 0x01000000
SPECTRUM_WINDOW_HAMMING = 0x02000000
SPECTRUM_WINDOW_KAISER = 0x03000000
SPECTRUM_MODE_MASK = 0x30000000
SPECTRUM_MODE_1 = 0x00000000
SPECTRUM_MODE_2 = 0x10000000
FOUR_WIRE = 0x00000001
TWO_CURRENTS = 0x00000020
REBUILT_PHASE_MASK = 0x000000C0
REBUILT_PHASE_NONE = 0x00000000
REBUILT_PHASE_A = 0x00000040
REBUILT_PHASE_B = 0x00000080
REBUILT_PHASE_C = 0x000000C0
KEEP_REBUILT_RMS = 0x00000200
FREQUENCY_CONTROL = 0x00000100
NEGATE_ACTIVE_POWER = 0x00000400
NEGATE_REACTIVE_POWER = 0x00000800
POWER_MASK = 0x00070000
POWER_NONE = 0x00000000
POWER_THREE_WATTMETER = 0x00010000
POWER_TWO_WATTMETER = 0x00020000
POWER_TWO_WATTMETER_PHASE = 0x00030000
POWER_THREE_WATTMETER_COMPLEX = 0x00040000
SIMULATED_SOURCE_MASK = 0x70000000


class ChannelData(Structure):
    _fields_ = [
        ("signalKind", c_int32),
        ("phase", c_uint32),
        ("samples", POINTER(c_double)),
        ("count", c_uint64),
        ("coefficient", c_double),
        ("inputResistance", c_double),
        ("gain", c_double),
    ]


assert sizeof(ChannelData) == 48


class struct1_T(Structure):
    _fields_ = [
        ("spectrumFlags", c_uint32),
        ("measurementFlags", c_uint32),
    ]


assert sizeof(struct1_T) == 8


class DataProcessRequest(Structure):
    _fields_ = [
        ("channels", POINTER(ChannelData)),
        ("channelCount", c_int32),
        ("samplesNumber", c_uint64),
        ("sampleRate", c_double),
        ("auxValue", c_double),
        ("auxMode", c_int16),
        ("inputType", c_uint32),
        ("options", struct1_T),
        ("operation", c_uint32),
        ("paramData", POINTER(c_char_p)),
        ("timeSignalDataU", POINTER(c_char_p)),
        ("timeSignalDataI", POINTER(c_char_p)),
        ("spectrumParamU", POINTER(c_char_p)),
        ("spectrumParamI", POINTER(c_char_p)),
        ("paramDataThdU", POINTER(c_char_p)),
        ("paramDataThdI", POINTER(c_char_p)),
        ("errorString", POINTER(c_char_p)),
    ]


assert sizeof(DataProcessRequest) == 128


@dataclass(frozen=True)
class ParameterFields:
    S: float
    Sa: float
    Sb: float
    Sc: float
    P: float
    Pa: float
    Pb: float
    Pc: float
    Q: float
    Qa: float
    Qb: float
    Qc: float
    Uda: float
    Udb: float
    Udc: float
    Udab: float
    Udbc: float
    Udca: float
    Ud0: float
    Ida: float
    Idb: float
    Idc: float
    Fa: float
    Fb: float
    Fc: float
    THD_Va: float
    THD_Vb: float
    THD_Vc: float
    THD_Ia: float
    THD_Ib: float
    THD_Ic: float
    Pf: float
    Pfa: float
    Pfb: float
    Pfc: float


PARAMETER_UNITS = {
    "S": "VA",
    "Sa": "VA",
    "Sb": "VA",
    "Sc": "VA",
    "P": "W",
    "Pa": "W",
    "Pb": "W",
    "Pc": "W",
    "Q": "VAR",
    "Qa": "VAR",
    "Qb": "VAR",
    "Qc": "VAR",
    "Uda": "V",
    "Udb": "V",
    "Udc": "V",
    "Udab": "V",
    "Udbc": "V",
    "Udca": "V",
    "Ud0": "V",
    "Ida": "A",
    "Idb": "A",
    "Idc": "A",
    "Fa": "Hz",
    "Fb": "Hz",
    "Fc": "Hz",
    "THD_Va": "%",
    "THD_Vb": "%",
    "THD_Vc": "%",
    "THD_Ia": "%",
    "THD_Ib": "%",
    "THD_Ic": "%",
    "Pf": "-",
    "Pfa": "-",
    "Pfb": "-",
    "Pfc": "-",
}
