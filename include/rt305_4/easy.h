/*
 * easy.h - inline helpers for hosts of libRT305_4.so.1, in C99 and in C++11 and later.
 *
 *     static double ua[10000], ub[10000], uc[10000];             filled by the host, in V
 *     const ChannelData channels[3] = {
 *         rt305_4_channel(RT305_4_KIND_VOLTAGE, RT305_4_PHASE_A, ua, 10000, 1.0),
 *         rt305_4_channel(RT305_4_KIND_VOLTAGE, RT305_4_PHASE_B, ub, 10000, 1.0),
 *         rt305_4_channel(RT305_4_KIND_VOLTAGE, RT305_4_PHASE_C, uc, 10000, 1.0)};
 *     RT305_4_Texts texts;
 *     DataProcessRequest request = rt305_4_request(channels, 3, &texts);
 *     request.operation = RT305_4_OPERATION_SPECTRUM;
 *     puts(dataProccess(request) ? texts.spectrumParamU : texts.errorString);
 *
 * Nothing here allocates, copies samples or calls the library, so a host that loads the library at run time can use it
 * too. A request points to the host's channels and texts, and a channel to the host's samples: all of them must exist
 * until the call returns, and must not move in between. Copying a request copies these pointers.
 */
#ifndef RT305_4_EASY_H
#define RT305_4_EASY_H

#include "rt305_4/rt305_4.h"

/* The texts of a request, named like its fields. Each is "" until a call sets it. The library owns the texts: they are
 * valid until the next call. */
typedef struct RT305_4_Texts {
    const char* paramData;
    const char* timeSignalDataU;
    const char* timeSignalDataI;
    const char* spectrumParamU;
    const char* spectrumParamI;
    const char* paramDataThdU;
    const char* paramDataThdI;
    const char* errorString;
} RT305_4_Texts;

/* Numbers of the texts, in the order of the request's fields. Operation n > 0 makes text 2 n - 1 of the voltages and
 * text 2 n of the currents. */
#define RT305_4_TEXT_PARAMETERS 0U
#define RT305_4_TEXT_SIGNALS_U 1U
#define RT305_4_TEXT_SIGNALS_I 2U
#define RT305_4_TEXT_SPECTRUM_U 3U
#define RT305_4_TEXT_SPECTRUM_I 4U
#define RT305_4_TEXT_DISTORTION_U 5U
#define RT305_4_TEXT_DISTORTION_I 6U
#define RT305_4_TEXT_ERROR 7U
#define RT305_4_TEXTS 8U /* how many: seven results and the error */

/* A channel of `count` samples, each multiplied by `coefficient`; 1.0 if they are in V or A. The hardware scale is off:
 * set inputResistance and gain to apply it. */
static inline ChannelData rt305_4_channel(int32_t kind, uint32_t phase, const double* samples, uint64_t count,
                                          double coefficient) {
    const ChannelData channel = {kind, phase, samples, count, coefficient, 1.0, 0.0};
    return channel;
}

/* The output pointer number `text` of a request, 0 <= text < RT305_4_TEXTS: *rt305_4_output(&request, text) points to
 * the host's variable, and **rt305_4_output(&request, text) is the text. */
static inline const char*** rt305_4_output(DataProcessRequest* request, uint32_t text) {
    const char*** const outputs[RT305_4_TEXTS] = {
        &request->paramData,      &request->timeSignalDataU, &request->timeSignalDataI, &request->spectrumParamU,
        &request->spectrumParamI, &request->paramDataThdU,   &request->paramDataThdI,   &request->errorString};
    return outputs[text];
}

/* 1 if a successful call with this operation and input type makes the text number `text`, otherwise 0. The other texts
 * are those of earlier calls, or empty. */
static inline int rt305_4_isMade(const DataProcessRequest* request, uint32_t text) {
    const uint32_t oneKind = text % 2U == 1U ? RT305_4_INPUT_VOLTAGES : RT305_4_INPUT_CURRENTS;
    return text == RT305_4_TEXT_PARAMETERS ||
           (text < RT305_4_TEXT_ERROR && request->operation == (text + 1U) / 2U &&
            (request->inputType == oneKind || request->inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS));
}

/* A request for the parameter table of these channels; change any field before the call. The input type follows from
 * the kinds of the channels, and the rate from the type. samplesNumber is the count of the first channel. Without
 * channels the caller sets the type and samplesNumber. Every option is 0, which means line voltages and no power; a
 * spectrum lists its ten largest lines. All texts are set to "". */
static inline DataProcessRequest rt305_4_request(const ChannelData* channels, int32_t channelCount,
                                                 RT305_4_Texts* texts) {
    const RT305_4_Texts empty = {"", "", "", "", "", "", "", ""};
    int voltages = 0;
    int currents = 0;
    for (int32_t i = 0; i < channelCount; ++i) {
        voltages |= channels[i].signalKind == RT305_4_KIND_VOLTAGE;
        currents |= channels[i].signalKind == RT305_4_KIND_CURRENT;
    }
    const DataProcessRequest request = {channels,
                                        channelCount,
                                        channelCount > 0 ? channels[0].count : 0U,
                                        voltages == currents ? 10000.0 : 500.0,
                                        0.0,
                                        10,
                                        voltages && currents ? RT305_4_INPUT_VOLTAGES_AND_CURRENTS
                                        : voltages           ? RT305_4_INPUT_VOLTAGES
                                        : currents           ? RT305_4_INPUT_CURRENTS
                                                             : 0U,
                                        {0U, 0U},
                                        RT305_4_OPERATION_PARAMETERS,
                                        &texts->paramData,
                                        &texts->timeSignalDataU,
                                        &texts->timeSignalDataI,
                                        &texts->spectrumParamU,
                                        &texts->spectrumParamI,
                                        &texts->paramDataThdU,
                                        &texts->paramDataThdI,
                                        &texts->errorString};
    *texts = empty;
    return request;
}

#endif /* RT305_4_EASY_H */
