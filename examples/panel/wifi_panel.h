#pragma once

#include <wifi/manager.h>

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
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

    bool isOn() const { return on_; }
    void setOn(bool on);
    bool isRunning() const { return running_; }
    bool isScanning() const { return scanning_; }
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
    void wake();
    void refresh();
    void follow(const kaz::wifi::ConnectionInfo& info);
    void followAttempt(const kaz::wifi::ConnectionInfo& info);
    void begin(const std::string& ssid, kaz::wifi::SecurityMode security, bool saved);
    void endAttempt();
    void fail(Attempt::Outcome outcome, const std::string& ssid);

    NetworkModel networks_;
    ConnectForm form_{[this](const auto& settings, const auto& certificates) {
        return wifi_.validate(settings, certificates);
    }};
    bool on_ = false;
    bool running_ = false;
    bool scanning_ = false;
    kaz::wifi::ConnectionInfo connection_;
    QString problem_;
    std::string problemSsid_;

    std::optional<Attempt> attempt_;
    kaz::wifi::SecurityMode attemptSecurity_ = kaz::wifi::SecurityMode::none;
    bool attemptSaved_ = false;
    QTimer attemptClock_;

    std::atomic<bool> awake_{false};
    std::atomic<Attempt::Clock::time_point> scanningChanged_{Attempt::Clock::time_point()};
    // The last member, so that it is destroyed first: its callbacks use the other members.
    kaz::wifi::Manager wifi_;
};
