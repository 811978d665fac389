/*
 * rt305_4.h - the C interface of libRT305_4.so.1.
 *
 * The library measures one record of sampled three-phase voltages and currents: electrical parameters, time signals,
 * spectra and harmonics. It returns each result as a JSON text. This header declares all fifteen exported names;
 * easy.h has inline helpers that fill in a request.
 *
 * How to use it:
 *   1. Describe each sampled channel in a ChannelData.
 *   2. Fill in a DataProcessRequest: the channels, what to compute, and where to store the texts.
 *   3. Call dataProccess. It returns 1 on success and 0 on failure.
 *   4. Read the texts of the operation, or after a failure the error message.
 *
 * Sample rate: the library assumes the rate of its input type and does not resample. It assumes
 *   10000 Hz for voltages and currents together (type 21),
 *   500 Hz for voltages alone (type 4) and for currents alone (type 8).
 * Samples taken at another rate give frequencies, harmonics and power by phase angles for the assumed rate, whatever
 * sampleRate says: resample them first. RMS values, three-wattmeter powers and time signals do not depend on the rate.
 *
 * Texts: zero-terminated, printable ASCII, therefore valid UTF-8. Results are compact JSON: one object with one named
 * table. Numbers are written with the digits that give the same double when read; a value that could not be measured
 * (NaN or infinite) is null. docs/results.md describes every field. Messages are plain English sentences.
 *
 * Lifetime: the library owns every text that it returns. A text is valid until the next call of dataProccess or until
 * the library is unloaded. Do not free it; copy it to keep it longer. The library only reads the host's channels and
 * samples, only during the call, and keeps no pointer to them.
 *
 * Threads: the results belong to the whole process and are not protected by a lock. Run one dataProccess at a time,
 * from any thread, and finish reading its texts before the next call. All other functions can be called at any time.
 *
 * Out of memory: dataProccess throws the C++ exception std::bad_alloc or a class derived from it. No text changes, and
 * the next call works as usual. A host in C needs a C++ function around the call to catch the exception.
 */
#ifndef RT305_4_RT305_4_H
#define RT305_4_RT305_4_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define RT305_4_API __attribute__((visibility("default")))
#else
#define RT305_4_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- What to measure ---- */

/* The version text that getVersion returns. */
#define RT305_4_VERSION "20230616.1500"

/* DataProcessRequest.inputType: the channels that are measured. Each needs exactly samplesNumber samples.
 * Type 0 is accepted as well: it needs no channel and gives a parameter table without values. */
#define RT305_4_INPUT_VOLTAGES 4U               /* Ua, Ub, Uc, at 500 Hz */
#define RT305_4_INPUT_CURRENTS 8U               /* Ia, Ib, Ic, at 500 Hz */
#define RT305_4_INPUT_VOLTAGES_AND_CURRENTS 21U /* all six, at 10000 Hz; the only type with electrical parameters */

/* DataProcessRequest.operation: what is computed in addition to the parameter table. */
#define RT305_4_OPERATION_PARAMETERS 0U /* nothing else */
#define RT305_4_OPERATION_SIGNALS 1U    /* conditioned samples and their mean, RMS, crest factor and range */
#define RT305_4_OPERATION_SPECTRUM 2U   /* amplitude spectra and their largest lines */
#define RT305_4_OPERATION_DISTORTION 3U /* frequencies and levels of the harmonics */

/* ---- Channels ---- */

/* ChannelData.signalKind and ChannelData.phase. A channel with any other value is ignored. */
#define RT305_4_KIND_VOLTAGE 0
#define RT305_4_KIND_CURRENT 1
#define RT305_4_PHASE_A 0U
#define RT305_4_PHASE_B 1U
#define RT305_4_PHASE_C 2U

/* The largest number of samples of a channel. A channel with a larger count is treated as empty. */
#define RT305_4_MAX_SAMPLES 2147483647UL

/* One sampled channel. If a request has several for the same kind and phase, the last one counts.
 * A sample that is exactly 0 counts as missing and is replaced by the mean of the others; then the mean is subtracted.
 * The result is multiplied by the hardware scale and by the coefficient, and must then be in V or A.
 * The hardware scale is 1 if inputResistance is neither 0 nor 24.9 nor 127, or if the request has
 * RT305_4_SIMULATED_SOURCE_MASK set. With g = 1 + (19.53125 gain + 35) / 1000 it is otherwise
 *   0.0049417429956896556 / g                                    for 0 ohm,
 *   0.000732421875 * 6.74712643678161 / (inputResistance g)      for 24.9 and 127 ohm. */
typedef struct ChannelData {
    int32_t signalKind;     /* RT305_4_KIND_* */
    uint32_t phase;         /* RT305_4_PHASE_* */
    const double* samples;  /* owned by the host; a null pointer makes the channel empty */
    uint64_t count;         /* number of samples, at most RT305_4_MAX_SAMPLES */
    double coefficient;     /* factor to V or A, for example the ratio of a transformer */
    double inputResistance; /* ohm; selects the hardware scale */
    double gain;            /* gain setting of the acquisition hardware */
} ChannelData;

/* ---- The request ---- */

/* Option bits, described below. For phase voltages, currents and power start with measurementFlags =
 * RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX: zero means line voltages and no power. */
typedef struct struct1_T {
    uint32_t spectrumFlags;    /* RT305_4_SPECTRUM_* */
    uint32_t measurementFlags; /* wiring, power method and the like */
} struct1_T;

/* One request. All eight output pointers must point to a variable of the host, whatever the operation.
 * After success the seven results hold the start of their texts. Only the texts that the operation and the input type
 * make are new; the others are those of earlier calls, or empty. After failure only *errorString is set. */
typedef struct DataProcessRequest {
    const ChannelData* channels;  /* channelCount channels, owned by the host */
    int32_t channelCount;         /* zero or negative: none */
    uint64_t samplesNumber;       /* samples of each measured channel; must not be 0 */
    double sampleRate;            /* Hz; must not be 0. The results do not depend on it: see "Sample rate" above */
    double auxValue;              /* least height of a spectral peak, for RT305_4_SPECTRUM_CRITERION */
    int16_t auxMode;              /* number of spectral peaks wanted, at most 20 without a criterion */
    uint32_t inputType;           /* RT305_4_INPUT_* */
    struct1_T options;            /* zero, or the bits below */
    uint32_t operation;           /* RT305_4_OPERATION_* */
    const char** paramData;       /* out: electrical parameters, made by every successful call */
    const char** timeSignalDataU; /* out: voltage signals, made by operation 1 with types 4 and 21 */
    const char** timeSignalDataI; /* out: current signals, made by operation 1 with types 8 and 21 */
    const char** spectrumParamU;  /* out: voltage spectra, made by operation 2 with types 4 and 21 */
    const char** spectrumParamI;  /* out: current spectra, made by operation 2 with types 8 and 21 */
    const char** paramDataThdU;   /* out: voltage harmonics, made by operation 3 with types 4 and 21 */
    const char** paramDataThdI;   /* out: current harmonics, made by operation 3 with types 8 and 21 */
    const char** errorString;     /* out: the message of a failed call */
} DataProcessRequest;

/* ---- Functions ---- */

/* Returns the constant text RT305_4_VERSION. */
RT305_4_API const char* getVersion(void);

/* Stores the address of the list of input types, {4, 8, 21, 0}, in *out; the 0 ends the list. The list is constant and
 * belongs to the library. Does nothing if out is null. */
RT305_4_API void getSupportedInputTypes(const int32_t** out);

/* Checks the request, measures, and returns 1 with the texts. If a check fails, returns 0 with a message. */
RT305_4_API int32_t dataProccess(DataProcessRequest request);

/* ---- Options of spectra: struct1_T.spectrumFlags ---- */

/* Zero: linear amplitudes, the auxMode largest peaks, rectangular window, mode 1. All other bits are ignored. */

/* The unit of the lines. Values of these two bits other than _DB give linear amplitudes. */
#define RT305_4_SPECTRUM_LEVEL_MASK 0x00000006U   /* the bits that select it */
#define RT305_4_SPECTRUM_LEVEL_LINEAR 0x00000000U /* peak values in V or A */
#define RT305_4_SPECTRUM_LEVEL_DB 0x00000002U     /* dB below the largest line */

/* Set: list every peak higher than auxValue (V, A or dB), in order of frequency. Clear: list the largest by count. */
#define RT305_4_SPECTRUM_CRITERION 0x00010000U

/* The window. The amplitudes are not corrected for its gain. */
#define RT305_4_SPECTRUM_WINDOW_MASK 0x03000000U    /* the bits that select it */
#define RT305_4_SPECTRUM_WINDOW_RECT 0x00000000U    /* rectangular */
#define RT305_4_SPECTRUM_WINDOW_HANN 0x01000000U    /* Hann, symmetric, without the zeros at both ends */
#define RT305_4_SPECTRUM_WINDOW_HAMMING 0x02000000U /* Hamming, symmetric */
#define RT305_4_SPECTRUM_WINDOW_KAISER 0x03000000U  /* Kaiser, beta = 0.5 */

/* The lines. Zero padding sets their spacing: the assumed rate / (padding factor * samplesNumber).
 * Mode 1: padding factor 4 for voltages, 16 for currents; lines up to 1000 Hz with type 21, else up to 250 Hz.
 * Mode 2: padding factor 2; all lines up to half the assumed rate. Other values of these bits select mode 1. */
#define RT305_4_SPECTRUM_MODE_MASK 0x30000000U /* the bits that select it */
#define RT305_4_SPECTRUM_MODE_1 0x00000000U
#define RT305_4_SPECTRUM_MODE_2 0x10000000U

/* ---- Options of the measurement: struct1_T.measurementFlags ---- */

/* Zero: line voltages, three measured currents, narrow frequency window, no power, samples of the hardware. All bits
 * but those of rebuilt samples and RT305_4_SIMULATED_SOURCE_MASK matter for type 21 only. */

/* Set: Ua, Ub, Uc are the phase voltages of four wires. Clear: they are the line voltages ab, bc, ca of three wires. */
#define RT305_4_FOUR_WIRE 0x00000001U

/* Set: one current was not measured. Its samples are replaced by minus the sum of the other two. */
#define RT305_4_TWO_CURRENTS 0x00000020U
#define RT305_4_REBUILT_PHASE_MASK 0x000000C0U /* the bits that say which one */
#define RT305_4_REBUILT_PHASE_NONE 0x00000000U
#define RT305_4_REBUILT_PHASE_A 0x00000040U
#define RT305_4_REBUILT_PHASE_B 0x00000080U
#define RT305_4_REBUILT_PHASE_C 0x000000C0U

/* The RMS value of the current that RT305_4_REBUILT_PHASE_MASK selects. Set: from its samples. Clear: the mean of the
 * other two RMS values. */
#define RT305_4_KEEP_REBUILT_RMS 0x00000200U

/* Frequency, THD and power need a fundamental inside a window. Set: 10 to 60 Hz. Clear: 49.6 to 50.4 Hz. */
#define RT305_4_FREQUENCY_CONTROL 0x00000100U

/* Set: invert the sign of the total active or reactive power. */
#define RT305_4_NEGATE_ACTIVE_POWER 0x00000400U
#define RT305_4_NEGATE_REACTIVE_POWER 0x00000800U

/* How power is measured. docs/power-methods.md compares the methods. */
#define RT305_4_POWER_MASK 0x00070000U /* the bits that select it */
#define RT305_4_POWER_NONE 0x00000000U /* not at all; so does 0x00050000 */
/* P by phase is the mean of u i; Q = sqrt(S^2 - P^2). Needs phase voltages. 0x00060000 and 0x00070000 select it too. */
#define RT305_4_POWER_THREE_WATTMETER 0x00010000U
/* Totals only: Udab Ida at the angle between Ua and Ia, plus Udbc Idc at the angle between Ub and Ic. Needs line
 * voltages with Ub = Ucb. */
#define RT305_4_POWER_TWO_WATTMETER 0x00020000U
/* The same with the angles of Ub - Ua and of Ub - Uc, and each term in magnitude. Needs phase voltages. */
#define RT305_4_POWER_TWO_WATTMETER_PHASE 0x00030000U
/* Recommended. P and Q by phase, summed over the harmonics; Q > 0 when the current lags. Needs phase voltages. */
#define RT305_4_POWER_THREE_WATTMETER_COMPLEX 0x00040000U

/* Any of these bits set: the samples are in V and A, whatever inputResistance and gain say. */
#define RT305_4_SIMULATED_SOURCE_MASK 0x70000000U

/* ---- Non-finite numbers of the computation, as data and as functions; few hosts need them ---- */

RT305_4_API extern const double rtInf;
RT305_4_API extern const double rtMinusInf;
RT305_4_API extern const double rtNaN; /* positive quiet NaN, 0x7FF8000000000000 */
RT305_4_API extern const float rtInfF;
RT305_4_API extern const float rtMinusInfF;
RT305_4_API extern const float rtNaNF; /* positive quiet NaN, 0x7FC00000 */
RT305_4_API double rtGetInf(void);
RT305_4_API double rtGetMinusInf(void);
RT305_4_API double rtGetNaN(void);
RT305_4_API float rtGetInfF(void);
RT305_4_API float rtGetMinusInfF(void);
RT305_4_API float rtGetNaNF(void);

#ifdef __cplusplus
}
#endif

/* ---- The layout of the records is part of the interface (LP64) ---- */

#if defined(__cplusplus)
#define RT305_4_ASSERT_LAYOUT(name, condition) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define RT305_4_ASSERT_LAYOUT(name, condition) _Static_assert(condition, #name)
#else
#define RT305_4_ASSERT_LAYOUT(name, condition) typedef char rt305_4_layout_##name[(condition) ? 1 : -1]
#endif
#define RT305_4_ASSERT_OFFSET(record, field, at) \
    RT305_4_ASSERT_LAYOUT(record##_##field, offsetof(record, field) == (at))

RT305_4_ASSERT_OFFSET(ChannelData, signalKind, 0);
RT305_4_ASSERT_OFFSET(ChannelData, phase, 4);
RT305_4_ASSERT_OFFSET(ChannelData, samples, 8);
RT305_4_ASSERT_OFFSET(ChannelData, count, 16);
RT305_4_ASSERT_OFFSET(ChannelData, coefficient, 24);
RT305_4_ASSERT_OFFSET(ChannelData, inputResistance, 32);
RT305_4_ASSERT_OFFSET(ChannelData, gain, 40);
RT305_4_ASSERT_LAYOUT(ChannelData_size, sizeof(ChannelData) == 48);
RT305_4_ASSERT_OFFSET(struct1_T, spectrumFlags, 0);
RT305_4_ASSERT_OFFSET(struct1_T, measurementFlags, 4);
RT305_4_ASSERT_LAYOUT(struct1_T_size, sizeof(struct1_T) == 8);
RT305_4_ASSERT_OFFSET(DataProcessRequest, channels, 0);
RT305_4_ASSERT_OFFSET(DataProcessRequest, channelCount, 8);
RT305_4_ASSERT_OFFSET(DataProcessRequest, samplesNumber, 16);
RT305_4_ASSERT_OFFSET(DataProcessRequest, sampleRate, 24);
RT305_4_ASSERT_OFFSET(DataProcessRequest, auxValue, 32);
RT305_4_ASSERT_OFFSET(DataProcessRequest, auxMode, 40);
RT305_4_ASSERT_OFFSET(DataProcessRequest, inputType, 44);
RT305_4_ASSERT_OFFSET(DataProcessRequest, options, 48);
RT305_4_ASSERT_OFFSET(DataProcessRequest, operation, 56);
RT305_4_ASSERT_OFFSET(DataProcessRequest, paramData, 64);
RT305_4_ASSERT_OFFSET(DataProcessRequest, timeSignalDataU, 72);
RT305_4_ASSERT_OFFSET(DataProcessRequest, timeSignalDataI, 80);
RT305_4_ASSERT_OFFSET(DataProcessRequest, spectrumParamU, 88);
RT305_4_ASSERT_OFFSET(DataProcessRequest, spectrumParamI, 96);
RT305_4_ASSERT_OFFSET(DataProcessRequest, paramDataThdU, 104);
RT305_4_ASSERT_OFFSET(DataProcessRequest, paramDataThdI, 112);
RT305_4_ASSERT_OFFSET(DataProcessRequest, errorString, 120);
RT305_4_ASSERT_LAYOUT(DataProcessRequest_size, sizeof(DataProcessRequest) == 128);

#endif /* RT305_4_RT305_4_H */
