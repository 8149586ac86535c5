// The list of rules: rows, keys, dragging, and that its cost does not grow with the rules.
#include <QDragEnterEvent>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>

#include "tests/ui/SettingsCase.h"

namespace ferrivane {
namespace {

using test::whilePopupIsOpen;
using ::testing::ElementsAre;
namespace C = SettingsControls;

class RulesListTest : public test::SettingsCase {
  protected:
    QScrollBar& bar() const { return *list().verticalScrollBar(); }
    std::size_t rowsMade() const {
        return static_cast<std::size_t>(
            window->findChildren<QWidget*>(qt(C::rule.identifier)).size());
    }
    // In the list, in the middle of a row.
    QPoint place(std::size_t index) const {
        return {40, static_cast<int>(index) * list().rowHeight() - bar().value() +
                        list().rowHeight() / 2};
    }

    // A drag as the window system tells of it, from the rule's row.
    void beginDrag(std::size_t index) {
        const QString text = qt(view->beginDrag(id(index)));
        carried.setText(text);
        carried.setData(kRuleMimeType, text.toUtf8());
        enter(list().viewport());
    }
    void enter(QWidget* widget) {
        QDragEnterEvent event({1, 1}, Qt::MoveAction, &carried, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &event);
        EXPECT_TRUE(event.isAccepted());
    }
    void dragTo(const QPoint& point) {
        QDragMoveEvent move(point, Qt::MoveAction, &carried, Qt::LeftButton, {});
        QApplication::sendEvent(list().viewport(), &move);
        EXPECT_TRUE(move.isAccepted());
        settle();
    }
    void leave() {
        QDragLeaveEvent event;
        QApplication::sendEvent(list().viewport(), &event);
        settle();
    }
    bool drop(const QPoint& point) {
        QDropEvent event(point, Qt::MoveAction, &carried, Qt::LeftButton, {});
        QApplication::sendEvent(list().viewport(), &event);
        view->endDrag();
        settle();
        return event.isAccepted();
    }
    // The colours of the two points at the upper and at the lower edge of a row.
    std::pair<QColor, QColor> edges(std::size_t index) const {
        const QImage picture = list().grab().toImage();
        const int top = row(index)->mapTo(&list(), QPoint()).y();
        return {picture.pixelColor(100, top + 1),
                picture.pixelColor(100, top + list().rowHeight() - 2)};
    }

    QMimeData carried;
};

TEST_F(RulesListTest, HasWidgetsForTheRulesThatAreSeenOnly) {
    openWithRules(1000);
    EXPECT_LT(rowsMade(), 20U);
    EXPECT_EQ(match(0)->text(), "host0");
    bar().setValue(bar().maximum());
    settle();
    EXPECT_EQ(match(999)->text(), "host999");
    EXPECT_LT(rowsMade(), 20U);
    for (int value = 0; value < bar().maximum(); value += 997) {
        bar().setValue(value);
        for (const RuleRowWidget* shown : rows()) {
            EXPECT_EQ(shown->findChild<QLineEdit*>(qt(C::match.identifier))->text().toStdString(),
                      "host" + std::to_string(shown->index()));
        }
    }
    EXPECT_LT(rowsMade(), 20U);
}

TEST_F(RulesListTest, ARowThatIsEditedStaysWhileOneScrolls) {
    openWithRules(200);
    QLineEdit* const field = match(1);
    field->setFocus();
    bar().setValue(bar().maximum());
    settle();
    EXPECT_TRUE(field->hasFocus());
    QTest::keyClicks(field, "x");
    EXPECT_EQ(onDisk().rules[1].match, "xhost1");
}

TEST_F(RulesListTest, ANewRuleIsScrolledTo) {
    openWithRules(100);
    QTest::mouseClick(find<QPushButton>(C::addRule), Qt::LeftButton);
    settle();
    ASSERT_NE(row(100), nullptr);
    EXPECT_TRUE(match(100)->hasFocus());
    EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(RulesListTest, RowsAreTintedInTurn) {
    open();
    EXPECT_EQ(row(0)->backgroundRole(), QPalette::Base);
    EXPECT_EQ(row(1)->backgroundRole(), QPalette::AlternateBase);
    EXPECT_EQ(row(2)->backgroundRole(), QPalette::Base);
}

TEST_F(RulesListTest, TheTabKeyGoesThroughEveryRowAndOut) {
    openWithRules(40);
    row(0)->controls().front()->setFocus(Qt::TabFocusReason);
    for (std::size_t i = 0; i < 40; ++i) {
        for (std::size_t control = 0; control < 5; ++control) {
            ASSERT_NE(row(i), nullptr) << i;
            ASSERT_EQ(QApplication::focusWidget(), row(i)->controls().at(control))
                << i << " " << control;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
    }
    EXPECT_EQ(QApplication::focusWidget(), find<QPushButton>(C::addRule));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
    for (std::size_t i = 40; i-- > 0;) {
        ASSERT_NE(row(i), nullptr) << i;
        ASSERT_EQ(QApplication::focusWidget(), row(i)->controls().back()) << i;
        for (int control = 0; control < 5; ++control) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
        }
    }
    EXPECT_EQ(QApplication::focusWidget(), find<QPushButton>(C::makeDefault));
}

TEST_F(RulesListTest, KeysMoveARule) {
    open();
    QLineEdit* const field = match(0);
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Down, Qt::AltModifier);
    settle();
    EXPECT_THAT(matchesOnDisk(), ElementsAre("b", "a.example", "Mail"));
    EXPECT_EQ(QApplication::focusWidget(), match(1)) << "the focus goes with the rule";
    EXPECT_EQ(match(1)->text(), "a.example");
    QTest::keyClick(match(1), Qt::Key_Up, Qt::AltModifier);
    QTest::keyClick(match(0), Qt::Key_Up, Qt::AltModifier);
    EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "b", "Mail"));
    QWidget* const handle = inRow<QWidget>(0, C::handle);
    handle->setFocus();
    QTest::keyClick(handle, Qt::Key_Down);
    settle();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    EXPECT_THAT(matchesOnDisk(), ElementsAre("b", "Mail", "a.example"));
}

TEST_F(RulesListTest, AltAndAnArrowMoveFromEveryControlOfARow) {
    fake.applications.applicationsRunning = {{7, "Chat", "org.example.Chat", "/chat"}};
    open();
    for (const Control& control :
         {C::handle, C::kind, C::match, C::fillIn, C::profile, C::remove}) {
        const auto before = store.config();
        QWidget* const widget = inRow<QWidget>(2, control);
        widget->setFocus();
        QTest::keyClick(widget, Qt::Key_Up, Qt::AltModifier);
        settle();
        EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "Mail", "b")) << control.identifier;
        EXPECT_EQ(QApplication::focusWidget(), widget) << control.identifier;
        QTest::keyClick(widget, Qt::Key_Down, Qt::AltModifier);
        settle();
        EXPECT_EQ(store.config(), before) << control.identifier << " changes nothing else";
    }
}

TEST_F(RulesListTest, ArrowsGoFromFieldToField) {
    openWithRules(40);
    match(0)->setFocus();
    QTest::keyClick(match(0), Qt::Key_Up);
    EXPECT_TRUE(match(0)->hasFocus());
    for (std::size_t i = 0; i < 39; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        ASSERT_TRUE(match(i + 1)->hasFocus()) << i;
    }
    QTest::keyClick(match(39), Qt::Key_Down);
    EXPECT_TRUE(match(39)->hasFocus());
}

TEST_F(RulesListTest, TheHandleOpensTheMenu) {
    open();
    QWidget* const handle = inRow<QWidget>(1, C::handle);
    handle->setFocus();
    whilePopupIsOpen([&] { QTest::keyClick(handle, Qt::Key_Space); },
                     [](QWidget* popup) { popup->actions()[0]->trigger(); });
    EXPECT_THAT(matchesOnDisk(), ElementsAre("b", "a.example", "Mail"));
}

TEST_F(RulesListTest, AButtonThatAppearsIsReachedByTheTabKey) {
    open();
    auto* kind = inRow<QComboBox>(0, C::kind);
    kind->setCurrentIndex(2);
    emit kind->activated(2);
    fake.applications.applicationsRunning = {{7, "Chat", "org.example.Chat", "/chat"}};
    view->refresh();
    settle();
    match(0)->setFocus();
    QTest::keyClick(match(0), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), inRow<QWidget>(0, C::fillIn));
}

TEST_F(RulesListTest, TheFieldOfAnInactiveWindowStaysItsRules) {
    openWithRules(100);
    QLineEdit* const field = match(1);
    field->setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    bar().setValue(bar().maximum());
    settle();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_EQ(QApplication::focusWidget(), field);
    QTest::keyClick(field, Qt::Key_End);
    QTest::keyClicks(field, "Q");
    EXPECT_EQ(onDisk().rules[1].match, "host1Q");
}

TEST_F(RulesListTest, AMovedRuleStaysInSight) {
    openWithRules(50);
    QWidget* const handle = inRow<QWidget>(0, C::handle);
    handle->setFocus();
    for (int i = 0; i < 30; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        settle();
    }
    EXPECT_EQ(onDisk().rules[30].match, "host0");
    ASSERT_NE(row(30), nullptr);
    EXPECT_TRUE(list().viewport()->rect().contains(row(30)->geometry().center()));
}

TEST_F(RulesListTest, TheContextMenu) {
    open();
    const auto menuOf = [this](std::size_t index, const std::function<void(QWidget*)>& look) {
        whilePopupIsOpen(
            [&] {
                QContextMenuEvent event(QContextMenuEvent::Mouse, {2, 2},
                                        row(index)->mapToGlobal(QPoint(2, 2)));
                QApplication::sendEvent(row(index), &event);
            },
            look);
    };
    const auto lines = [](const QWidget* popup) {
        std::vector<std::string> texts;
        for (const QAction* action : popup->actions()) {
            texts.push_back(action->isSeparator() ? "-"
                                                  : action->text().toStdString() +
                                                        (action->isEnabled() ? "" : " (disabled)"));
        }
        return texts;
    };
    menuOf(0, [&](QWidget* popup) {
        EXPECT_THAT(lines(popup), ElementsAre("Move Up (disabled)", "Move Down", "-", "Remove"));
        popup->actions()[1]->trigger();
    });
    EXPECT_THAT(matchesOnDisk(), ElementsAre("b", "a.example", "Mail"));
    settle();
    menuOf(2, [&](QWidget* popup) {
        EXPECT_THAT(lines(popup), ElementsAre("Move Up", "Move Down (disabled)", "-", "Remove"));
        popup->actions()[3]->trigger();
    });
    settle();
    EXPECT_THAT(matchesOnDisk(), ElementsAre("b", "a.example"));
    view->removeRule(id(0));
    settle();
    menuOf(0, [&](QWidget* popup) {
        EXPECT_THAT(lines(popup),
                    ElementsAre("Move Up (disabled)", "Move Down (disabled)", "-", "Remove"));
    });
}

TEST_F(RulesListTest, TheWheelScrollsAndChangesNoChoice) {
    openWithRules(100);
    auto* profile = inRow<QComboBox>(0, C::profile);
    const QPointF center = profile->rect().center();
    QWheelEvent wheel(center, profile->mapToGlobal(center), {}, {0, -240}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel);  // others are not passed on
    qApp->notify(profile, &wheel);
    settle();
    EXPECT_EQ(onDisk().rules[0].profile, "Default");
    EXPECT_GT(bar().value(), 0);
}

TEST_F(RulesListTest, TheInsertionLineShowsWhereARuleWillStand) {
    open();
    const QColor accent = list().palette().color(QPalette::Highlight);
    beginDrag(2);
    dragTo(place(0));
    EXPECT_EQ(edges(0).first, accent);
    EXPECT_NE(edges(0).second, accent);
    dragTo(place(1));
    EXPECT_NE(edges(0).first, accent);
    EXPECT_EQ(edges(1).first, accent);
    leave();
    EXPECT_NE(edges(1).first, accent);
    view->endDrag();
    beginDrag(0);
    dragTo(place(2));
    EXPECT_EQ(edges(2).second, accent);
    EXPECT_NE(edges(2).first, accent);
    dragTo({40, list().viewport()->height() - 40});
    EXPECT_NE(edges(2).second, accent) << "on the list, on no row";
}

TEST_F(RulesListTest, ADropMovesTheRule) {
    open();
    beginDrag(2);
    dragTo(place(0));
    EXPECT_TRUE(drop(place(0)));
    EXPECT_THAT(matchesOnDisk(), ElementsAre("Mail", "a.example", "b"));
    beginDrag(0);
    dragTo(place(1));
    EXPECT_TRUE(drop(place(1)));
    EXPECT_THAT(matchesOnDisk(), ElementsAre("a.example", "Mail", "b"));
    beginDrag(0);
    EXPECT_TRUE(drop({40, list().viewport()->height() - 40}));
    EXPECT_THAT(matchesOnDisk(), ElementsAre("Mail", "b", "a.example")) << "the list's end";
    EXPECT_EQ(match(0)->text(), "Mail");
}

TEST_F(RulesListTest, ATextFromElsewhereMovesNothing) {
    open();
    const std::string before = test::readText(rulesFile);
    carried.setText("https://elsewhere.example/");
    enter(list().viewport());
    QDropEvent event(place(0), Qt::MoveAction | Qt::CopyAction, &carried, Qt::LeftButton, {});
    QApplication::sendEvent(list().viewport(), &event);
    EXPECT_TRUE(event.isAccepted());
    EXPECT_EQ(event.dropAction(), Qt::CopyAction) << "or it would vanish where it comes from";
    EXPECT_EQ(test::readText(rulesFile), before);
}

TEST_F(RulesListTest, ADraggedRuleIsNoTextForAField) {
    open();
    const auto dropOnField = [this] {
        enter(match(0));
        QDropEvent event({1, 1}, Qt::MoveAction, &carried, Qt::LeftButton, {});
        QApplication::sendEvent(match(0), &event);
        return match(0)->text().toStdString();
    };
    carried.setText("text");
    carried.setData(kRuleMimeType, "text");
    EXPECT_EQ(dropOnField(), "a.example") << "it goes to the list";
    carried.removeFormat(kRuleMimeType);
    EXPECT_EQ(dropOnField(), "texta.example");
}

TEST_F(RulesListTest, ScrollsWhileARuleIsHeldAtItsEdge) {
    openWithRules(100);
    beginDrag(0);
    const int edge = list().viewport()->height() - 2;
    dragTo({40, edge});
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() > 200; }, test::kLong));
    dragTo(place(static_cast<std::size_t>(bar().value() / list().rowHeight()) + 2));
    const int there = bar().value();
    QTest::qWait(100);
    EXPECT_EQ(bar().value(), there) << "away from the edge";
    dragTo({40, 2});
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().value() == 0; }, test::kLong));
    leave();
}

TEST_F(RulesListTest, TheFocusStaysInItsPlaceWhenTheRulesAreReadAgain) {
    open();
    match(1)->setFocus();
    writeRules(R"({"rules": [{"kind": "url", "match": "one", "profile": ""},
                             {"kind": "url", "match": "two", "profile": ""}]})");
    store.reload();
    settle();
    EXPECT_TRUE(match(1)->hasFocus());
    EXPECT_EQ(match(1)->text(), "two");
    EXPECT_EQ(view->focusedRule(), id(1));
    EXPECT_FALSE(match(1)->isUndoAvailable()) << "what was typed there belonged to another rule";
}

}  // namespace
}  // namespace ferrivane
