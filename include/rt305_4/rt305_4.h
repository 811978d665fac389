/*
 * rt305_4.h - the C interface of libRT305_4.so.1, a plug-in that computes the electrical parameters, time signals,
 * spectra and harmonic content of one record of sampled three-phase voltages and currents.
 *
 * A host fills one DataProcessRequest, calls dataProccess and reads the JSON texts that belong to the requested
 * operation and input type. Fifteen names are exported; all of them are declared here.
 *
 * Threads: the library keeps its sample buffers, its messages and its result texts for the whole process, without a
 * lock. Only one call of dataProccess may run at a time, and a host has finished with the texts of one call before it
 * makes the next.
 *
 * Lifetime: every text that the library hands out belongs to the library. It is never freed by the host, and it stays
 * valid until the next call of dataProccess or until the library is unloaded, whichever comes first. The host's
 * descriptors and samples are only read, and only during the call.
 *
 * Failure: dataProccess answers 0 and one English message. When memory runs out it leaves with the C++ exception
 * std::bad_alloc (or a class derived from it) instead; the texts of the last success stay, and the library can serve
 * the next call. A host in C calls through a C++ function that catches it.
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

/* The version text that getVersion returns. */
#define RT305_4_VERSION "20230616.1500"

/* DataProcessRequest.inputType: which channels must carry samplesNumber samples each. */
#define RT305_4_INPUT_VOLTAGES UINT32_C(4)               /* Ua, Ub, Uc */
#define RT305_4_INPUT_CURRENTS UINT32_C(8)               /* Ia, Ib, Ic */
#define RT305_4_INPUT_VOLTAGES_AND_CURRENTS UINT32_C(21) /* all six; the only type with electrical parameters */

/* DataProcessRequest.operation: what is computed beside the parameter table. */
#define RT305_4_OPERATION_PARAMETERS UINT32_C(0) /* nothing else */
#define RT305_4_OPERATION_SIGNALS UINT32_C(1)    /* time signals with their statistics */
#define RT305_4_OPERATION_SPECTRUM UINT32_C(2)   /* amplitude spectra with their largest lines */
#define RT305_4_OPERATION_DISTORTION UINT32_C(3) /* harmonics: frequencies and levels */

/* ChannelData.signalKind and ChannelData.phase. A descriptor with any other value is skipped. */
#define RT305_4_KIND_VOLTAGE INT32_C(0)
#define RT305_4_KIND_CURRENT INT32_C(1)
#define RT305_4_PHASE_A UINT32_C(0)
#define RT305_4_PHASE_B UINT32_C(1)
#define RT305_4_PHASE_C UINT32_C(2)

/* The largest ChannelData.count that a channel can hold; a descriptor with a larger one is an empty channel. */
#define RT305_4_MAX_SAMPLES UINT64_C(2147483647)

/* struct1_T.spectrumFlags. Zero: rectangular window, long zero padding cut at a frequency limit, linear amplitudes,
 * the largest peaks by count. */
#define RT305_4_SPECTRUM_LEVEL_MASK UINT32_C(0x00000006)     /* one of the two values below */
#define RT305_4_SPECTRUM_LEVEL_LINEAR UINT32_C(0x00000000)   /* amplitudes in V or A; so is every value but _DB */
#define RT305_4_SPECTRUM_LEVEL_DB UINT32_C(0x00000002)       /* dB below the largest line */
#define RT305_4_SPECTRUM_CRITERION UINT32_C(0x00010000)      /* peaks must exceed auxValue (V, A or dB) */
#define RT305_4_SPECTRUM_WINDOW_MASK UINT32_C(0x03000000)    /* one of the four windows */
#define RT305_4_SPECTRUM_WINDOW_RECT UINT32_C(0x00000000)    /* rectangular */
#define RT305_4_SPECTRUM_WINDOW_HANN UINT32_C(0x01000000)    /* symmetric Hann without zero end points */
#define RT305_4_SPECTRUM_WINDOW_HAMMING UINT32_C(0x02000000) /* symmetric Hamming */
#define RT305_4_SPECTRUM_WINDOW_KAISER UINT32_C(0x03000000)  /* Kaiser, beta = 0.5 */
#define RT305_4_SPECTRUM_MODE_MASK UINT32_C(0x30000000)      /* one of the two values below */
#define RT305_4_SPECTRUM_MODE_1 \
    UINT32_C(0x00000000) /* padding 4 (voltages), 16 (currents); cut at the limit; default */
#define RT305_4_SPECTRUM_MODE_2 UINT32_C(0x10000000) /* padding 2, the whole half spectrum */

/* struct1_T.measurementFlags. Zero: three-wire connection, three measured currents, the fixed frequency window,
 * no power, samples of the real acquisition hardware. */
#define RT305_4_FOUR_WIRE UINT32_C(0x00000001)          /* set: Ua..Uc are phase voltages; clear: line voltages */
#define RT305_4_TWO_CURRENTS UINT32_C(0x00000020)       /* rebuild one current's samples from the other two */
#define RT305_4_REBUILT_PHASE_MASK UINT32_C(0x000000C0) /* which one: */
#define RT305_4_REBUILT_PHASE_NONE UINT32_C(0x00000000)
#define RT305_4_REBUILT_PHASE_A UINT32_C(0x00000040)
#define RT305_4_REBUILT_PHASE_B UINT32_C(0x00000080)
#define RT305_4_REBUILT_PHASE_C UINT32_C(0x000000C0)
#define RT305_4_FREQUENCY_CONTROL UINT32_C(0x00000100)     /* set: 10..60 Hz; clear: 49.6..50.4 Hz */
#define RT305_4_KEEP_REBUILT_RMS UINT32_C(0x00000200)      /* clear: RMS of the rebuilt phase = mean of the others */
#define RT305_4_NEGATE_ACTIVE_POWER UINT32_C(0x00000400)   /* flip the sign of the total P */
#define RT305_4_NEGATE_REACTIVE_POWER UINT32_C(0x00000800) /* flip the sign of the total Q */
#define RT305_4_POWER_MASK UINT32_C(0x00070000)            /* wattmeter method: */
#define RT305_4_POWER_NONE UINT32_C(0x00000000)            /* no power; so is 0x00050000 */
#define RT305_4_POWER_THREE_WATTMETER UINT32_C(0x00010000) /* averaged products; so are 0x00060000 and 0x00070000 */
#define RT305_4_POWER_TWO_WATTMETER UINT32_C(0x00020000)   /* RMS values and phase angles */
#define RT305_4_POWER_TWO_WATTMETER_PHASE UINT32_C(0x00030000)     /* angles of line voltages, magnitudes */
#define RT305_4_POWER_THREE_WATTMETER_COMPLEX UINT32_C(0x00040000) /* analytic signals */
#define RT305_4_SIMULATED_SOURCE_MASK \
    UINT32_C(0x70000000) /* any bit: samples are in V and A already, no hardware scale */

/* One sampled channel. A later descriptor for the same channel replaces an earlier one whole. */
typedef struct ChannelData {
    int32_t signalKind;     /* RT305_4_KIND_* */
    uint32_t phase;         /* RT305_4_PHASE_* */
    const double* samples;  /* count samples, owned by the host; a null pointer makes the channel empty */
    uint64_t count;         /* number of samples at samples */
    double coefficient;     /* factor on the conditioned samples, e.g. a transformer ratio */
    double inputResistance; /* ohm; 0, 24.9 and 127 select a hardware scale factor, anything else selects 1 */
    double gain;            /* gain setting of the acquisition channel, dimensionless */
} ChannelData;

/* Option flags of a request. */
typedef struct struct1_T {
    uint32_t spectrumFlags;    /* RT305_4_SPECTRUM_* */
    uint32_t measurementFlags; /* the measurement options above */
} struct1_T;

/* One request. Every output pointer must be valid: the library refuses a request in which one is null.
 * After success each of the seven result pointers holds the start of its text. Only the texts of the requested
 * operation and input type were made by this call; the others are what an earlier call left, or empty.
 * After failure only *errorString was written. */
typedef struct DataProcessRequest {
    const ChannelData* channels; /* channelCount descriptors, owned by the host */
    int32_t channelCount;        /* zero or negative: none */
    uint64_t samplesNumber;      /* samples that every required channel must carry; 0 is refused */
    double sampleRate;           /* Hz; 0 is refused */
    double auxValue;             /* criterion of the spectral peak search, in V, A or dB */
    int16_t auxMode;             /* number of spectral maxima wanted */
    uint32_t inputType;          /* RT305_4_INPUT_* */
    struct1_T options;
    uint32_t operation;           /* RT305_4_OPERATION_* */
    const char** paramData;       /* electrical parameters, made by every successful call */
    const char** timeSignalDataU; /* voltage signals: operation 1, types 4 and 21 */
    const char** timeSignalDataI; /* current signals: operation 1, types 8 and 21 */
    const char** spectrumParamU;  /* voltage spectra: operation 2, types 4 and 21 */
    const char** spectrumParamI;  /* current spectra: operation 2, types 8 and 21 */
    const char** paramDataThdU;   /* voltage harmonics: operation 3, types 4 and 21 */
    const char** paramDataThdI;   /* current harmonics: operation 3, types 8 and 21 */
    const char** errorString;     /* the message of a failed call */
} DataProcessRequest;

/* Returns the constant text RT305_4_VERSION. */
RT305_4_API const char* getVersion(void);

/* Stores the address of the accepted input types, ended by 0, in *out. Does nothing when out is null. */
RT305_4_API void getSupportedInputTypes(const int32_t** out);

/* Checks the request, computes, and hands out the texts. Returns 1 on success, 0 on failure. */
RT305_4_API int32_t dataProccess(DataProcessRequest request);

/* The non-finite numbers of the computation, as data and as functions. */
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

/* The layout is part of the interface. */
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
