#include "connect_form.h"

#include <algorithm>
#include <utility>

#include "ssid_text.h"
#include "words.h"

using kaz::wifi::ConnectResult;
using kaz::wifi::SecurityMode;

namespace {

SecurityMode modeOf(ConnectForm::Security security) {
    switch (security) {
        case ConnectForm::Open:
            return SecurityMode::none;
        case ConnectForm::Wep:
            return SecurityMode::wep;
        case ConnectForm::Wpa:
            return SecurityMode::wpaPsk;
        case ConnectForm::Wpa2:
            return SecurityMode::rsnPsk;
        case ConnectForm::Wpa3:
            return SecurityMode::sae;
        case ConnectForm::Enterprise:
            return SecurityMode::enterprise;
    }
    return SecurityMode::unsupported;
}

ConnectForm::Security securityOf(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return ConnectForm::Open;
        case SecurityMode::wep:
            return ConnectForm::Wep;
        case SecurityMode::wpaPsk:
            return ConnectForm::Wpa;
        case SecurityMode::rsnPsk:
            return ConnectForm::Wpa2;
        case SecurityMode::sae:
            return ConnectForm::Wpa3;
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return ConnectForm::Enterprise;
        case SecurityMode::unsupported:  // it asks for nothing, because it cannot be joined
            break;
    }
    return ConnectForm::Open;
}

void wipe(std::string& text) {
    std::fill(text.begin(), text.end(), '\0');
    text.clear();
}

// The empty string comes first; with it, the supplicant and the server negotiate.
QStringList choices(const std::set<std::string>& methods) {
    QStringList list{QString()};
    for (const std::string& method : methods) {
        list.append(QString::fromStdString(method));
    }
    return list;
}

}  // namespace

void ConnectForm::begin(const NetworkModel::Row& network) {
    clear();
    typed_.ssid = network.ssid;
    access_ = network.access;
    security_ = securityOf(access_.mode);
    Q_EMIT changed();
}

void ConnectForm::beginHidden() {
    clear();
    hidden_ = true;
    security_ = Wpa2;
    Q_EMIT changed();
}

void ConnectForm::setMethods(std::set<std::string> eap, std::set<std::string> phase2) {
    if (eap != eapMethods_ || phase2 != phase2Methods_) {
        eapMethods_ = std::move(eap);
        phase2Methods_ = std::move(phase2);
        Q_EMIT changed();
    }
}

kaz::wifi::ConnectionSettings ConnectForm::settings() const {
    kaz::wifi::ConnectionSettings settings;
    settings.ssid = typed_.ssid;
    settings.securityMode = modeOf(security_);
    settings.hidden = hidden_;
    if (security_ != Open) {
        settings.password = typed_.password;
    }
    if (security_ == Enterprise) {
        settings.identity = typed_.identity;
        settings.anonymousIdentity = typed_.anonymousIdentity;
        settings.eapMethod = typed_.eapMethod;
        settings.phase2Method = typed_.phase2Method;
    }
    return settings;
}

kaz::wifi::Certificates ConnectForm::certificates() const {
    return security_ == Enterprise ? certificates_ : kaz::wifi::Certificates();
}

void ConnectForm::clear() {
    wipe(typed_.password);
    typed_ = {};
    certificates_ = {};
    hidden_ = false;
    access_ = {{}, SecurityMode::none};
    security_ = Open;
    Q_EMIT changed();
}

QString ConnectForm::name() const {
    return shownSsid(typed_.ssid);
}

void ConnectForm::setSsid(const QString& text) {
    set(typed_.ssid, text);
}

void ConnectForm::setSecurity(Security security) {
    if (security != security_) {
        security_ = security;
        Q_EMIT changed();
    }
}

QString ConnectForm::securityName() const {
    return securityInWords({{}, modeOf(security_)});
}

void ConnectForm::setPassword(const QString& text) {
    set(typed_.password, text);
}

QString ConnectForm::obstacle() const {
    return obstacleInWords(access_);
}

QString ConnectForm::passwordHint() const {
    return ::passwordHint(modeOf(security_));
}

void ConnectForm::setIdentity(const QString& text) {
    set(typed_.identity, text);
}

void ConnectForm::setAnonymousIdentity(const QString& text) {
    set(typed_.anonymousIdentity, text);
}

void ConnectForm::setEapMethod(const QString& text) {
    set(typed_.eapMethod, text);
}

void ConnectForm::setPhase2Method(const QString& text) {
    set(typed_.phase2Method, text);
}

void ConnectForm::setCaFile(const QString& text) {
    set(certificates_.caFile, text);
}

void ConnectForm::setServerDomain(const QString& text) {
    set(certificates_.serverDomain, text);
}

QString ConnectForm::serverRemark() const {
    return security_ == Enterprise ? serverRemarkInWords(certificates_) : QString();
}

QStringList ConnectForm::eapMethods() const {
    return choices(eapMethods_);
}

QStringList ConnectForm::phase2Methods() const {
    return choices(phase2Methods_);
}

ConnectForm::Field ConnectForm::problemField() const {
    switch (verdict()) {
        case ConnectResult::ok:
            break;
        case ConnectResult::ssidEmpty:
        case ConnectResult::ssidTooLong:
        case ConnectResult::notSendable:  // what is typed can be sent
            return SsidField;
        case ConnectResult::passwordTooShort:
        case ConnectResult::passwordTooLong:
        case ConnectResult::wepKeyInvalidLength:
            return PasswordField;
        case ConnectResult::eapMethodUnsupported:
        case ConnectResult::phase2MethodUnsupported:
        case ConnectResult::securityModeUnsupported:
        case ConnectResult::keyFileMissing:  // the form has no field for a key
            return MethodField;
        case ConnectResult::fileInvalid:
        case ConnectResult::caFileMissing:
            return CaFileField;
        case ConnectResult::serverDomainInvalid:
            return DomainField;
    }
    // The library accepts this, but no network does.
    return security_ == Enterprise && typed_.identity.empty() ? IdentityField : NoField;
}

QString ConnectForm::problem() const {
    if (problemField() == IdentityField) {
        return QStringLiteral("The identity is missing");
    }
    if (verdict() == ConnectResult::eapMethodUnsupported && !certificates_.caFile.empty()) {
        return QStringLiteral("This method does not verify the server");
    }
    return problemInWords(verdict(), modeOf(security_));
}

ConnectResult ConnectForm::verdict() const {
    return validate_(settings(), certificates());
}

void ConnectForm::set(std::string& field, const QString& text) {
    std::string bytes = text.toStdString();
    if (bytes != field) {
        wipe(field);
        field = std::move(bytes);
        Q_EMIT changed();
    }
}
