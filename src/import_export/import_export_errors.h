// import_export_errors.h: What can go wrong writing or reading a set-up file, with the texts people
// see.
#pragma once

#include <string>

namespace corvetta {

struct ExportError {
    enum class Kind { encodingFailed, userCancelled };
    Kind kind = Kind::encodingFailed;
    // What went wrong underneath (a file error, an encoder's message); only encodingFailed has one.
    std::string cause;

    std::string description() const;
};

struct ImportError {
    enum class Kind { userCancelled, fileNotFound, decodingFailed, invalidFormat };
    Kind kind = Kind::decodingFailed;
    // Only decodingFailed carries one.
    std::string cause;

    std::string description() const;
};

}  // namespace corvetta
