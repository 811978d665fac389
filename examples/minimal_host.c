/* A complete host: measures one second of a synthetic three-phase system and prints the parameter table as JSON.
 *
 *     cc -std=c99 minimal_host.c -lRT305_4 -lm
 */
#include <math.h>
#include <stdio.h>

#include "rt305_4/easy.h"

#define SAMPLES 10000 /* one second: with both voltages and currents the library assumes 10 kHz */

static double voltages[3][SAMPLES]; /* V */
static double currents[3][SAMPLES]; /* A */

/* 50 Hz, 230 V and 5 A RMS; each current is 30 degrees behind its voltage. */
static void fillSamples(void) {
    const double pi = 3.14159265358979323846;
    for (int phase = 0; phase < 3; ++phase) {
        for (int k = 0; k < SAMPLES; ++k) {
            const double angle = 2.0 * pi * (50.0 * k / SAMPLES - phase / 3.0);
            voltages[phase][k] = sqrt(2.0) * 230.0 * sin(angle);
            currents[phase][k] = sqrt(2.0) * 5.0 * sin(angle - pi / 6.0);
        }
    }
}

int main(void) {
    fillSamples();
    ChannelData channels[6];
    for (uint32_t phase = 0; phase < 3; ++phase) {
        channels[phase] = rt305_4_channel(RT305_4_KIND_VOLTAGE, phase, voltages[phase], SAMPLES, 1.0);
        channels[3 + phase] = rt305_4_channel(RT305_4_KIND_CURRENT, phase, currents[phase], SAMPLES, 1.0);
    }
    RT305_4_Texts texts;
    DataProcessRequest request = rt305_4_request(channels, 6, &texts);
    request.options.measurementFlags = RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX;
    if (!dataProccess(request)) {
        fprintf(stderr, "%s\n", texts.errorString);
        return 1;
    }
    puts(texts.paramData);
    return 0;
}
