#ifndef RT305_HOST_WRITING_COMTRADE_WRITER_H
#define RT305_HOST_WRITING_COMTRADE_WRITER_H

#include <iosfwd>

#include "reading/comtrade_configuration.h"
#include "recording/recording.h"

namespace rt305 {

/// Writes a converted recording as a COMTRADE record of 2013 (IEEE C37.111-2013, IEC 60255-24): ASCII, BINARY32 or
/// FLOAT32, not BINARY. ASCII has 2 x 99998 steps from the largest to the smallest sample, BINARY32 2 x 2147483647. A
/// missing sample is 99999, 0x80000000 or NaN. Commas in names become blanks. Without a date in the recording the
/// dates are zeros, which readers take as unknown; without that of the trigger it is that of the start. Dates have nine
/// decimals if one needs more than six.

void writeComtradeConfiguration(const Recording& recording, SampleForm form, std::ostream& out);
void writeComtradeData(const Recording& recording, SampleForm form, std::ostream& out);

/// Fails on a column with infinite samples, for which there is no multiplier.
void requireFiniteSamples(const Recording& recording);

/// Both as the sections of one file (.cff).
void writeComtradeFile(const Recording& recording, SampleForm form, std::ostream& out);

}  // namespace rt305

#endif
