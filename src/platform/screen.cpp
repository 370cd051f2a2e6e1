#include "platform/screen.h"

namespace corvetta {

std::string Screen::description() const {
    return localizedName + " (" + kScreenNumberKey + " " + std::to_string(number) + ", frame " +
           frame.description() + ")";
}

}  // namespace corvetta
