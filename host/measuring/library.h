#ifndef RT305_HOST_MEASURING_LIBRARY_H
#define RT305_HOST_MEASURING_LIBRARY_H

#include <array>
#include <iterator>
#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// Where a request's texts go, in its order: the parameters, voltages and currents of each operation, the message.
inline constexpr const char** DataProcessRequest::*textPlaces[] = {
    &DataProcessRequest::paramData,      &DataProcessRequest::timeSignalDataU, &DataProcessRequest::timeSignalDataI,
    &DataProcessRequest::spectrumParamU, &DataProcessRequest::spectrumParamI,  &DataProcessRequest::paramDataThdU,
    &DataProcessRequest::paramDataThdI,  &DataProcessRequest::errorString};
inline constexpr std::size_t textTotal = std::size(textPlaces);
inline constexpr std::size_t errorText = textTotal - 1;

/// A request to the library with the places for its texts. The samples stay in the measurement.
struct Call {
    Call(const Measurement& measurement, std::uint32_t operation);  // RT305_4_OPERATION_*
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    std::vector<ChannelData> channels;
    DataProcessRequest request{};  // process() fills in the channels
    std::array<const char*, textTotal> texts;
};

/// The measurement library, loaded at run time until the program ends.
class Library {
public:
    /// Opens the file that is given, else the one that the environment variable RT305_4_LIBRARY names, else
    /// libRT305_4.so.1 near the executable, else the one that the system finds. Fails when none can be opened or when
    /// it lacks an interface function.
    explicit Library(const std::string& file);

    std::string version() const { return getVersion_(); }

    /// The address of an exported name, null when there is none.
    void* find(const char* name) const;

    /// The library's answer: 1, or 0 with a message.
    std::int32_t process(Call& call) const;

    /// Runs one operation. The texts of kinds that were not measured, which an earlier call may have left, are not
    /// given. Fails with the library's own message when it refuses.
    ResultTexts measure(const Measurement& measurement, std::uint32_t operation) const;

private:
    void* handle_;
    decltype(&::getVersion) getVersion_;
    decltype(&::dataProccess) dataProccess_;
};

}  // namespace rt305

#endif
