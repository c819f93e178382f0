#pragma once

#include <wifi/client/follower.h>

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

#include <optional>

#include "attempt.h"
#include "connect_form.h"
#include "network_model.h"

// The Manager for QML: properties that change on the GUI thread, and the user's requests. The model's `networkId`
// identifies a network.
class WifiPanel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by main")

    Q_PROPERTY(bool on READ isOn WRITE setOn NOTIFY changed)
    Q_PROPERTY(bool running READ isRunning NOTIFY changed)
    Q_PROPERTY(bool scanning READ isScanning NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)  // the last problem, as text
    Q_PROPERTY(QString problemId READ problemId NOTIFY
                   changed)  // the network with the problem, while the user can retry
    Q_PROPERTY(NetworkModel* networks READ networks CONSTANT)
    Q_PROPERTY(ConnectForm* form READ form CONSTANT)

  public:
    explicit WifiPanel(QObject* parent = nullptr);

    bool isOn() const { return state_.enabled; }
    void setOn(bool on);
    bool isRunning() const { return state_.running; }
    bool isScanning() const { return state_.scanning; }
    QString problem() const { return problem_; }
    QString problemId() const;
    NetworkModel* networks() { return &networks_; }
    ConnectForm* form() { return &form_; }

    Q_INVOKABLE void scan();
    // Prepares the form for a network. Returns false when the network is no longer in the list.
    Q_INVOKABLE bool prepare(const QString& networkId);
    Q_INVOKABLE void prepareHidden();
    // Connect with the form's settings, or to a configured network.
    Q_INVOKABLE void submit();
    Q_INVOKABLE void joinSaved(const QString& networkId);
    Q_INVOKABLE void leave();
    Q_INVOKABLE void forget(const QString& networkId);
    Q_INVOKABLE void dismissProblem();

  Q_SIGNALS:
    void changed();

  private:
    void takeAll();
    void show(kaz::wifi::client::Snapshot state);
    void follow(const kaz::wifi::ConnectionInfo& before);
    void followAttempt();
    void begin(const std::string& ssid, bool saved);
    void fail(Attempt::Outcome outcome, const kaz::wifi::Outcome& why, const std::string& ssid);

    NetworkModel networks_;
    ConnectForm form_{[this](const auto& settings, const auto& certificates) {
        return wifi_.manager().validate(settings, certificates);
    }};
    QString problem_;
    std::string problemSsid_;

    std::optional<Attempt> attempt_;
    bool attemptSaved_ = false;

    kaz::wifi::client::Snapshot state_;
    kaz::wifi::client::Follower wifi_;
    QSocketNotifier arrivals_{wifi_.fd(), QSocketNotifier::Read};
};
