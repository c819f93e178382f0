#pragma once

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <set>
#include <string>
#include <utility>

#include "network_model.h"

// The input of the connect dialog, validated at every key stroke.
class ConnectForm : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to WifiPanel")

    Q_PROPERTY(QString name READ name NOTIFY changed)
    Q_PROPERTY(bool hidden READ hidden NOTIFY changed)
    Q_PROPERTY(QString ssid READ ssid WRITE setSsid NOTIFY changed)  // of a hidden network
    Q_PROPERTY(Security security READ security WRITE setSecurity NOTIFY changed)
    Q_PROPERTY(QString securityName READ securityName NOTIFY changed)
    Q_PROPERTY(QString obstacle READ obstacle NOTIFY changed)  // why this device cannot join the network
    Q_PROPERTY(QString password READ password WRITE setPassword NOTIFY changed)
    Q_PROPERTY(QString passwordHint READ passwordHint NOTIFY changed)
    Q_PROPERTY(QString identity READ identity WRITE setIdentity NOTIFY changed)
    Q_PROPERTY(QString anonymousIdentity READ anonymousIdentity WRITE setAnonymousIdentity NOTIFY changed)
    Q_PROPERTY(QString eapMethod READ eapMethod WRITE setEapMethod NOTIFY changed)  // empty: any
    Q_PROPERTY(QString phase2Method READ phase2Method WRITE setPhase2Method NOTIFY changed)
    Q_PROPERTY(QString caFile READ caFile WRITE setCaFile NOTIFY changed)
    Q_PROPERTY(QString serverDomain READ serverDomain WRITE setServerDomain NOTIFY changed)
    Q_PROPERTY(QString serverRemark READ serverRemark NOTIFY changed)  // what is not verified; may be empty
    Q_PROPERTY(QStringList eapMethods READ eapMethods NOTIFY changed)
    Q_PROPERTY(QStringList phase2Methods READ phase2Methods NOTIFY changed)
    Q_PROPERTY(Field problemField READ problemField NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)  // why connecting is not possible
    Q_PROPERTY(bool valid READ valid NOTIFY changed)

  public:
    enum Security { Open, Wep, Wpa, Wpa2, Wpa3, Enterprise };
    Q_ENUM(Security)
    enum Field { NoField, SsidField, PasswordField, IdentityField, MethodField, CaFileField, DomainField };
    Q_ENUM(Field)

    using Validate = std::function<kaz::wifi::ConnectResult(const kaz::wifi::ConnectionSettings&,
                                                            const kaz::wifi::Certificates&)>;

    // Takes Manager::validate.
    explicit ConnectForm(Validate validate) : validate_(std::move(validate)) {}

    // Resets the form, for a network in the list or for a hidden one.
    void begin(const NetworkModel::Row& network);
    void beginHidden();
    void setMethods(std::set<std::string> eap, std::set<std::string> phase2);

    // The settings from the input. Fields that the security does not use are empty.
    kaz::wifi::ConnectionSettings settings() const;
    kaz::wifi::Certificates certificates() const;

    // Clears the input on the screen and, as far as QString allows, in memory.
    Q_INVOKABLE void clear();

    QString name() const;
    bool hidden() const { return hidden_; }
    QString ssid() const { return QString::fromStdString(typed_.ssid); }
    void setSsid(const QString& text);
    Security security() const { return security_; }
    void setSecurity(Security security);
    QString securityName() const;
    QString obstacle() const;
    QString password() const { return QString::fromStdString(typed_.password); }
    void setPassword(const QString& text);
    QString passwordHint() const;
    QString identity() const { return QString::fromStdString(typed_.identity); }
    void setIdentity(const QString& text);
    QString anonymousIdentity() const { return QString::fromStdString(typed_.anonymousIdentity); }
    void setAnonymousIdentity(const QString& text);
    QString eapMethod() const { return QString::fromStdString(typed_.eapMethod); }
    void setEapMethod(const QString& text);
    QString phase2Method() const { return QString::fromStdString(typed_.phase2Method); }
    void setPhase2Method(const QString& text);
    QString caFile() const { return QString::fromStdString(certificates_.caFile); }
    void setCaFile(const QString& text);
    QString serverDomain() const { return QString::fromStdString(certificates_.serverDomain); }
    void setServerDomain(const QString& text);
    QString serverRemark() const;
    QStringList eapMethods() const;
    QStringList phase2Methods() const;
    Field problemField() const;
    QString problem() const;
    bool valid() const { return problemField() == NoField && obstacle().isEmpty(); }

  Q_SIGNALS:
    void changed();

  private:
    kaz::wifi::ConnectResult verdict() const;
    void set(std::string& field, const QString& text);

    Validate validate_;
    kaz::wifi::ConnectionSettings typed_;
    kaz::wifi::Certificates certificates_;
    kaz::wifi::NetworkAccess access_{{}, kaz::wifi::SecurityMode::none};
    Security security_ = Open;
    bool hidden_ = false;
    std::set<std::string> eapMethods_;
    std::set<std::string> phase2Methods_;
};
