#ifndef RT305_HOST_MEASURING_LIBRARY_H
#define RT305_HOST_MEASURING_LIBRARY_H

#include <array>
#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"
#include "rt305_4/easy.h"

namespace rt305 {

/// A request to the library with the variables for its texts, numbered by RT305_4_TEXT_*. The samples stay in the
/// measurement.
struct Call {
    Call(const Measurement& measurement, std::uint32_t operation)  // RT305_4_OPERATION_*
        : Call(measurement, measurement.settings, operation) {}

    /// With other settings than those of the measurement.
    Call(const Measurement& measurement, const MeasurementSettings& settings, std::uint32_t operation);
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    std::vector<ChannelData> channels;
    DataProcessRequest request{};  // process() fills in the channels
    std::array<const char*, RT305_4_TEXTS> texts;
};

/// The measurement library, loaded at run time. It stays loaded until the program ends.
class Library {
public:
    /// Opens the given file, else the one named by the environment variable RT305_4_LIBRARY, else libRT305_4.so.1 near
    /// the executable, else the one that the system finds. Fails when none can be opened or when an interface function
    /// is missing.
    explicit Library(const std::string& file);

    std::string version() const { return getVersion_(); }

    /// The address of an exported name; null when there is none.
    void* find(const char* name) const;

    /// What the library returns: 1, or 0 with a message.
    std::int32_t process(Call& call) const;

    /// Runs one operation. Texts that an earlier call left are not returned. Fails with the library's message when it
    /// refuses.
    ResultTexts measure(const Measurement& measurement, std::uint32_t operation) const;
    ResultTexts measure(Call& call) const;

private:
    void* handle_;
    decltype(&::getVersion) getVersion_;
    decltype(&::dataProccess) dataProccess_;
};

}  // namespace rt305

#endif
