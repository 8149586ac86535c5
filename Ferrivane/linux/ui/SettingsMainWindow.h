// The settings window.
#pragma once

#include <QMainWindow>
#include <QTimer>
#include <functional>
#include <string>

#include "Ferrivane/Observers.h"
#include "Ferrivane/SettingsView.h"
#include "Ferrivane/linux/Toolkit.h"
#include "Ferrivane/linux/ui/RulesWatch.h"

class QCheckBox;
class QLabel;
class QPushButton;

namespace ferrivane {

class BannerRow;
class Combo;
class LinkTesterBox;
class RulesList;

class SettingsMainWindow : public QMainWindow {
  public:
    // The view outlives this.
    SettingsMainWindow(SettingsView& view, const SettingsWindowSetup& setup);

    // In front of the others.
    void present();

  protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget* makeRules();
    QWidget* makeOptions();
    QWidget* makeProblem();
    void renderSoon();
    void render();
    void keepRoom();
    void applyColours();
    void commitBeside(const QWidget& clicked);
    void saveFrame();

    SettingsView& view_;
    const std::function<void(const std::string&)> frameChanged_;
    RulesWatch watch_;
    Observers::Subscription storeChanges_;
    Observers::Subscription viewChanges_;
    QTimer rendering_;
    QTimer frameSaving_;

    BannerRow* defaultBrowser_;
    BannerRow* helper_;
    QLabel* noRules_;
    RulesList* rules_;
    QLabel* hint_;
    Combo* defaultProfile_;
    QLabel* caption_;
    LinkTesterBox* tester_;
    QCheckBox* menuBarIcon_;
    QLabel* version_;
    QWidget* problem_;
    QLabel* problemText_;
};

}  // namespace ferrivane
