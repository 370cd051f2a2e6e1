#include "import_export/import_export_errors.h"

namespace corvetta {

std::string ExportError::description() const {
    switch (kind) {
        case Kind::encodingFailed:
            return "Failed to encode data: " + cause;
        case Kind::userCancelled:
            return "Export was cancelled by user";
    }
    return {};
}

std::string ImportError::description() const {
    switch (kind) {
        case Kind::userCancelled:
            return "Import was cancelled by user";
        case Kind::fileNotFound:
            return "Selected file could not be found";
        case Kind::decodingFailed:
            return "Failed to read data: " + cause;
        case Kind::invalidFormat:
            return "File format is not valid. Please select a valid Corvetta export file.";
    }
    return {};
}

}  // namespace corvetta
