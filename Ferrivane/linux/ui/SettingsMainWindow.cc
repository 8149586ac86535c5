#include "Ferrivane/linux/ui/SettingsMainWindow.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Ferrivane/SettingsWindow.h"
#include "Ferrivane/linux/ui/About.h"
#include "Ferrivane/linux/ui/Banner.h"
#include "Ferrivane/linux/ui/LinkTesterBox.h"
#include "Ferrivane/linux/ui/MainMenuBar.h"
#include "Ferrivane/linux/ui/RulesList.h"

namespace ferrivane {
namespace {

constexpr int kFrameMilliseconds = 500;  // after the last move

QPushButton* makeButton(const Control& control, const QString& title) {
    auto* button = new QPushButton(title);
    identify(button, control);
    return button;
}

}  // namespace

SettingsMainWindow::SettingsMainWindow(SettingsView& view, const SettingsWindowSetup& setup)
    : view_(view),
      frameChanged_(setup.frameChanged),
      watch_(view.store().fileURL(), [this] { view_.rulesFileChanged(); }) {
    identify(this, SettingsControls::window);
    setWindowTitle(qt(SettingsWindow::title));
    setWindowIcon(applicationIcon());
    const auto perform = [this, others = setup.perform](Command command) {
        saveFrame();  // it may be the end
        others(command);
    };
    installMenuBar(*this, setup.menus, perform, [this] { showAbout(view_.version(), this); });

    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    constexpr int kPadding = SettingsWindow::padding;
    column->setContentsMargins(kPadding, kPadding, kPadding, kPadding);
    column->setSpacing(10);
    defaultBrowser_ =
        new BannerRow(SettingsControls::defaultBrowserText, SettingsControls::makeDefault);
    connect(defaultBrowser_->button(), &QPushButton::clicked, this,
            [this] { view_.makeDefaultBrowser(); });
    helper_ = new BannerRow(SettingsControls::helperText, SettingsControls::installHelper);
    connect(helper_->button(), &QPushButton::clicked, this, [this] { view_.installHelper(); });
    auto* folders = makeButton(SettingsControls::showFolders,
                               withAccessKey(SettingsView::showFoldersTitle, 'o'));
    folders->setToolTip(qt(SettingsView::showFoldersToolTip));
    connect(folders, &QPushButton::clicked, this, [this] { view_.revealHelper(); });
    helper_->addButton(folders);
    column->addWidget(defaultBrowser_);
    column->addWidget(helper_);
    column->addWidget(makeRules(), 1);
    tester_ = new LinkTesterBox(view_);
    column->addWidget(tester_);
    column->addWidget(makeOptions());
    column->addWidget(makeProblem());
    setCentralWidget(content);

    view_.isInteracting = [] {
        return QApplication::activePopupWidget() != nullptr ||
               QApplication::mouseButtons() != Qt::NoButton;
    };
    rendering_.setSingleShot(true);
    connect(&rendering_, &QTimer::timeout, this, &SettingsMainWindow::render);
    storeChanges_ = view_.store().willChange.add([this] { renderSoon(); });
    viewChanges_ = view_.willChange.add([this] { renderSoon(); });
    frameSaving_.setSingleShot(true);
    frameSaving_.setInterval(kFrameMilliseconds);
    connect(&frameSaving_, &QTimer::timeout, this, &SettingsMainWindow::saveFrame);

    if (!restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(setup.frame)))) {
        resize(SettingsWindow::size.width, SettingsWindow::size.height);
        move(screen()->availableGeometry().center() - rect().center());
    }
    applyColours();
    qApp->installEventFilter(this);
}

QWidget* SettingsMainWindow::makeRules() {
    auto* group = new QGroupBox(qt(SettingsView::rulesTitle));
    noRules_ = plainLabel(SettingsView::noRules);
    identify(noRules_, SettingsControls::noRules);
    noRules_->setAlignment(Qt::AlignCenter);
    rules_ = new RulesList(view_);

    auto* add =
        makeButton(SettingsControls::addRule, withAccessKey(SettingsView::addRuleTitle, 'A'));
    add->setIcon(symbolIcon("plus"));
    connect(add, &QPushButton::clicked, this, [this] { view_.addRule(); });
    hint_ = stretching(plainLabel(SettingsView::rulesHint));
    auto* below = new QHBoxLayout;
    below->setSpacing(12);
    below->addWidget(add);
    below->addWidget(hint_, 1);

    defaultProfile_ = new Combo(SettingsWindow::defaultProfileWidth);
    identify(defaultProfile_, SettingsControls::defaultProfile);
    defaultProfile_->setHint(qt(SettingsView::defaultProfileToolTip));
    connect(defaultProfile_, &QComboBox::activated, this,
            [this] { view_.setDefaultProfile(defaultProfile_->currentValue().toStdString()); });
    auto* label = plainLabel(SettingsView::defaultProfileLabel, false);
    label->setText(withAccessKey(SettingsView::defaultProfileLabel, 'D'));
    label->setBuddy(defaultProfile_);
    caption_ = stretching(plainLabel(SettingsView::defaultProfileCaption));
    auto* otherwise = new QHBoxLayout;
    otherwise->setSpacing(12);
    otherwise->addWidget(label);
    otherwise->addWidget(defaultProfile_);
    otherwise->addWidget(caption_, 1);

    auto* column = new QVBoxLayout(group);
    column->setContentsMargins(kGroupMargins);
    column->setSpacing(8);
    column->addWidget(noRules_, 1);
    column->addWidget(rules_, 1);
    column->addLayout(below);
    column->addLayout(otherwise);
    return group;
}

QWidget* SettingsMainWindow::makeOptions() {
    auto* group = new QGroupBox(qt(SettingsView::optionsTitle));
    menuBarIcon_ = new QCheckBox(withAccessKey(SettingsView::menuBarIconTitle, 'S'));
    identify(menuBarIcon_, SettingsControls::menuBarIcon);
    connect(menuBarIcon_, &QCheckBox::toggled, this, [this](bool shows) {
        if (shows != view_.showMenuBarIcon()) view_.setShowMenuBarIcon(shows);
    });
    auto* edit =
        makeButton(SettingsControls::editRules, withAccessKey(SettingsView::editRulesTitle, 'r'));
    connect(edit, &QPushButton::clicked, this, [this] { view_.editRules(); });
    auto* log =
        makeButton(SettingsControls::showLog, withAccessKey(SettingsView::showLogTitle, 'L'));
    connect(log, &QPushButton::clicked, this, [this] { view_.showLog(); });
    version_ = plainLabel(view_.version(), false);
    identify(version_, SettingsControls::version);

    auto* row = new QHBoxLayout(group);
    row->setContentsMargins(kGroupMargins);
    row->setSpacing(12);
    row->addWidget(menuBarIcon_);
    row->addWidget(edit);
    row->addWidget(log);
    row->addStretch(1);
    row->addWidget(version_);
    return group;
}

QWidget* SettingsMainWindow::makeProblem() {
    problem_ = new QWidget;
    problemText_ = stretching(plainLabel());
    identify(problemText_, SettingsControls::problem);
    problemText_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    problemText_->setFocusPolicy(Qt::StrongFocus);
    auto* row = new QHBoxLayout(problem_);
    row->setContentsMargins({});
    row->setSpacing(8);
    row->addWidget(new Symbol("exclamationmark.triangle", Tint::red));
    row->addWidget(problemText_, 1);
    return problem_;
}

void SettingsMainWindow::renderSoon() {
    if (!rendering_.isActive()) rendering_.start(0);
}

void SettingsMainWindow::render() {
    defaultBrowser_->display(view_.defaultBrowserBanner());
    const auto helper = view_.helperBanner();
    if (helper) helper_->display(*helper);
    helper_->setVisible(helper.has_value());

    const Config& config = view_.store().config();
    noRules_->setVisible(config.rules.empty());
    rules_->setVisible(!config.rules.empty());
    rules_->render();
    defaultProfile_->showChoices(view_.profileChoices(config.defaultProfile));
    tester_->render();
    menuBarIcon_->setChecked(view_.showMenuBarIcon());

    const auto& problem = view_.store().problem();
    const QString before = problemText_->text();
    showText(problemText_, problem.value_or(""));
    problem_->setVisible(problem.has_value());
    if (problem && problemText_->text() != before) {
        QAccessibleEvent alert(problemText_, QAccessible::Alert);  // read out at once
        QAccessible::updateAccessibility(&alert);
    }
}

// Large letters, or every line there is, may need more than is usual.
void SettingsMainWindow::keepRoom() {
    const QLayout* const content = centralWidget()->layout();
    const int width = std::max(SettingsWindow::minimumSize.width, content->minimumSize().width());
    const int height = content->minimumHeightForWidth(width) + menuBar()->sizeHint().height();
    setMinimumSize(width, std::max(SettingsWindow::minimumSize.height, height));
}

void SettingsMainWindow::present() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void SettingsMainWindow::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        view_.refresh();
        watch_.start();
        rendering_.stop();
        render();
    }
    QMainWindow::showEvent(event);
}

void SettingsMainWindow::closeEvent(QCloseEvent* event) {
    if (QWidget* const focused = focusWidget()) focused->clearFocus();
    saveFrame();
    watch_.stop();
    QMainWindow::closeEvent(event);
}

void SettingsMainWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (isVisible()) frameSaving_.start();
}

void SettingsMainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (isVisible()) frameSaving_.start();
}

void SettingsMainWindow::saveFrame() {
    frameSaving_.stop();
    if (frameChanged_) frameChanged_(saveGeometry().toBase64().toStdString());
}

void SettingsMainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        applyColours();
    }
}

void SettingsMainWindow::applyColours() {
    for (QWidget* text : {static_cast<QWidget*>(hint_), static_cast<QWidget*>(caption_),
                          static_cast<QWidget*>(version_)}) {
        setColour(text, Tint::secondary);
    }
    setColour(problemText_, Tint::red);
    tester_->applyColours();
    setFontScale(version_, 0.85);
    update();
}

bool SettingsMainWindow::eventFilter(QObject* watched, QEvent* event) {
    const auto* const widget = qobject_cast<const QWidget*>(watched);
    if (event->type() == QEvent::LayoutRequest && watched == centralWidget()) keepRoom();
    if (event->type() == QEvent::MouseButtonPress && widget != nullptr &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        commitBeside(*widget);
    }
    const bool endsPopup =
        event->type() == QEvent::Hide && widget != nullptr && widget->windowType() == Qt::Popup;
    if (endsPopup || event->type() == QEvent::MouseButtonRelease) {
        QTimer::singleShot(0, this, [this] { view_.readChanges(); });
    }
    return QMainWindow::eventFilter(watched, event);
}

// A click beside the field that is being edited ends the editing; the menus work on the field.
void SettingsMainWindow::commitBeside(const QWidget& clicked) {
    QWidget* const focused = focusWidget();
    if (qobject_cast<QLineEdit*>(focused) == nullptr || !focused->hasFocus()) return;
    if (clicked.window() != this || qobject_cast<const QLineEdit*>(&clicked) != nullptr) return;
    if (qobject_cast<const QMenuBar*>(&clicked) == nullptr) focused->clearFocus();
}

}  // namespace ferrivane
