#include <wifi/types.h>

namespace kaz::wifi {

UISecurityMode toUISecurityMode(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return UISecurityMode::none;
        case SecurityMode::wep:
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
        case SecurityMode::sae:
            return UISecurityMode::password;
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return UISecurityMode::enterprise;
        case SecurityMode::unsupported:
            return UISecurityMode::unsupported;
    }
    return UISecurityMode::none;
}

}  // namespace kaz::wifi
