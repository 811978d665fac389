/* The smallest host: measures one second of a synthetic three-phase system and prints the parameter table as JSON.
 *
 *     cc -std=c99 minimal_host.c -lRT305_4 -lm
 */
#include <math.h>
#include <stdio.h>

#include "rt305_4/rt305_4.h"

#define SAMPLES 10000
#define RATE 10000.0

static double samples[6][SAMPLES]; /* Ua, Ub, Uc in V, then Ia, Ib, Ic in A */

/* 50 Hz, 230 V and 5 A RMS, the currents 30 degrees behind their voltages. */
static void fillSamples(void) {
    const double pi = 3.14159265358979323846;
    for (int channel = 0; channel < 6; ++channel) {
        const double peak = sqrt(2.0) * (channel < 3 ? 230.0 : 5.0);
        const double degrees = 120.0 * (channel % 3) + (channel < 3 ? 0.0 : 30.0);
        for (int k = 0; k < SAMPLES; ++k) {
            samples[channel][k] = peak * sin(2.0 * pi * 50.0 * k / RATE - degrees / 180.0 * pi);
        }
    }
}

int main(void) {
    ChannelData channels[6];
    fillSamples();
    for (int i = 0; i < 6; ++i) {
        channels[i].signalKind = i < 3 ? RT305_4_KIND_VOLTAGE : RT305_4_KIND_CURRENT;
        channels[i].phase = (uint32_t)(i % 3); /* RT305_4_PHASE_A, _B, _C */
        channels[i].samples = samples[i];
        channels[i].count = SAMPLES;
        channels[i].coefficient = 1.0;
        channels[i].inputResistance = 0.0;
        channels[i].gain = 1.0;
    }

    const char* texts[7] = {0}; /* owned by the library, valid until the next call */
    const char* error = "";
    DataProcessRequest request = {0};
    request.channels = channels;
    request.channelCount = 6;
    request.samplesNumber = SAMPLES;
    request.sampleRate = RATE;
    request.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    request.options.measurementFlags =
        RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX | RT305_4_SIMULATED_SOURCE_MASK;
    request.operation = RT305_4_OPERATION_PARAMETERS;
    request.paramData = &texts[0];
    request.timeSignalDataU = &texts[1];
    request.timeSignalDataI = &texts[2];
    request.spectrumParamU = &texts[3];
    request.spectrumParamI = &texts[4];
    request.paramDataThdU = &texts[5];
    request.paramDataThdI = &texts[6];
    request.errorString = &error;

    if (!dataProccess(request)) {
        fprintf(stderr, "%s\n", error);
        return 1;
    }
    puts(texts[0]);
    return 0;
}
