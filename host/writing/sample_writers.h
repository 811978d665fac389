#ifndef RT305_HOST_WRITING_SAMPLE_WRITERS_H
#define RT305_HOST_WRITING_SAMPLE_WRITERS_H

#include <iosfwd>
#include <string>

#include "recording/recording.h"

namespace rt305 {

/// The name of a column with its unit: "Ua (V)".
std::string headingOf(const Column& column);

/// Write a converted recording. All keep every sample to the last bit.

/// Time in s, then the columns as "Ua (V)"; a missing sample is an empty cell.
void writeSampleTable(const Recording& recording, std::ostream& out);

/// A NumPy file of one record a sample, with the fields "time (s)" and those of the columns, as 64-bit floats. Equal
/// names get a number.
void writeNumpy(const Recording& recording, std::ostream& out);

/// A WAV file of 64-bit floats in the columns' own units, not relative to a full scale. Fails on a rate that is no
/// whole number of Hz, as WAV has no other, and on more than 1024 columns. Names and units are lost.
std::string soundFile(const Recording& recording);

}  // namespace rt305

#endif
