#ifndef RT305_HOST_LIBRARY_H
#define RT305_HOST_LIBRARY_H

#include <string>

#include "measurement.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// The texts of one call that the tool shows. A text that the call did not make is empty.
struct ResultTexts {
    std::string parameters;
    std::string voltageSignals;
    std::string currentSignals;
};

/// The measurement library, loaded at run time until the program ends.
class Library {
public:
    /// Opens the file that is given, else the one that the environment variable RT305_4_LIBRARY names, else
    /// libRT305_4.so.1 near the executable, else the one that the system finds. Fails when none can be opened or when
    /// it lacks an interface function.
    explicit Library(const std::string& file);

    std::string version() const { return _getVersion(); }

    /// Runs one operation (RT305_4_OPERATION_*). Fails with the library's own message when it refuses.
    ResultTexts measure(const Measurement& measurement, std::uint32_t operation) const;

private:
    decltype(&::getVersion) _getVersion;
    decltype(&::dataProccess) _dataProccess;
};

}  // namespace rt305

#endif
