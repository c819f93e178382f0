#include "words.h"

#include <wifi/client/words.h>

using kaz::wifi::ConnectResult;
using kaz::wifi::SecurityMode;
using kaz::wifi::client::Words;

QString securityInWords(const kaz::wifi::NetworkAccess& access) {
    switch (access.mode) {
        case SecurityMode::none:
            return QStringLiteral("Open");
        case SecurityMode::wep:
            return QStringLiteral("WEP");
        case SecurityMode::wpaPsk:
            return QStringLiteral("WPA");
        case SecurityMode::rsnPsk:
            return QStringLiteral("WPA2");
        case SecurityMode::sae:
            return QStringLiteral("WPA3");
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return QStringLiteral("Enterprise");
        case SecurityMode::unsupported:
            break;
    }
    const QString words = QString::fromStdString(Words().security(access));
    return words.left(1).toUpper() + words.mid(1);
}

QString obstacleInWords(const kaz::wifi::NetworkAccess& access) {
    if (access.mode != SecurityMode::unsupported) {
        return {};
    }
    const QString advice = QString::fromStdString(Words().advice(access));
    return QStringLiteral("This device cannot join it: it asks for %1. %2")
        .arg(QString::fromStdString(Words().security(access)),
             advice.isEmpty() ? QString() : QStringLiteral("What helps: %1.").arg(advice))
        .trimmed();
}

QString problemInWords(ConnectResult verdict, SecurityMode mode) {
    switch (verdict) {
        case ConnectResult::ok:
            return {};
        case ConnectResult::ssidEmpty:
            return QStringLiteral("The name is missing");
        case ConnectResult::ssidTooLong:
            return QStringLiteral("Too long: at most 32 characters");
        case ConnectResult::passwordTooShort:
            return mode == SecurityMode::sae ? QStringLiteral("The password is missing")
                                             : QStringLiteral("Too short: at least 8 characters");
        case ConnectResult::passwordTooLong:
            return mode == SecurityMode::sae ? QStringLiteral("Too long: at most 1024 characters")
                                             : QStringLiteral("Too long: at most 63 characters");
        case ConnectResult::wepKeyInvalidLength:
            return QStringLiteral("A WEP key has 5 or 13 characters");
        case ConnectResult::eapMethodUnsupported:
            return QStringLiteral("This device does not offer this method");
        case ConnectResult::phase2MethodUnsupported:
            return QStringLiteral("This inner method is not known");
        case ConnectResult::securityModeUnsupported:
            return QStringLiteral("This device cannot join such a network");
        case ConnectResult::fileInvalid:
            return QStringLiteral("A file begins with “/”");
        case ConnectResult::caFileMissing:
            return QStringLiteral("Without a CA the domain verifies nothing");
        case ConnectResult::serverDomainInvalid:
            return QStringLiteral("Not a domain, such as “example.org”");
        case ConnectResult::notSendable:
            return QStringLiteral("Its name has bytes that this device cannot send");
        case ConnectResult::keyFileMissing:
            return QStringLiteral("This method needs a key");
    }
    return {};
}

QString serverRemarkInWords(const kaz::wifi::Certificates& certificates) {
    if (certificates.caFile.empty()) {
        return QStringLiteral(
            "The server is not verified. A false access point could get the password. The CA and the domain, "
            "which the "
            "network's operator names, verify it.");
    }
    return certificates.serverDomain.empty()
               ? QStringLiteral("Any server of this CA is trusted. The domain verifies which one.")
               : QString();
}

QString passwordHint(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::wep:
            return QStringLiteral("5 or 13 characters");
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
            return QStringLiteral("8 to 63 characters");
        case SecurityMode::none:
        case SecurityMode::sae:
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
        case SecurityMode::unsupported:
            break;
    }
    return {};
}

QString failureInWords(Attempt::Outcome outcome, const kaz::wifi::Outcome& why, const QString& name) {
    const QString cause = QString::fromStdString(Words().cause(why));
    switch (outcome) {
        case Attempt::Outcome::connected:
            return {};
        case Attempt::Outcome::failed:
            return QStringLiteral("Could not join “%1”: %2.").arg(name, cause);
        case Attempt::Outcome::noAddress:
            return QStringLiteral("“%1” let this device in, but gave it no address.").arg(name);
        case Attempt::Outcome::lost:
            return QStringLiteral("The connection to “%1” was lost: %2.").arg(name, cause);
        case Attempt::Outcome::stopped:
            return QStringLiteral("Wi-Fi stopped while joining “%1”.").arg(name);
    }
    return {};
}
