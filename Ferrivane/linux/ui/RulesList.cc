#include "Ferrivane/linux/ui/RulesList.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <algorithm>

#include "Ferrivane/SettingsWindow.h"
#include "Ferrivane/linux/ui/Symbols.h"

namespace ferrivane {
namespace {

constexpr int kAutoScrollMargin = 28;
constexpr int kAutoScrollMilliseconds = 16;

}  // namespace

RulesList::RulesList(SettingsView& view, QWidget* parent)
    : QAbstractScrollArea(parent), view_(view), overlay_(new RulesOverlay(*this)) {
    measure();  // the first row of all tells the toolkit what a list of them is
    identify(this, SettingsControls::rules);
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setMinimumHeight(SettingsWindow::listHeight);
    setFocusPolicy(Qt::ClickFocus);
    viewport()->setBackgroundRole(QPalette::Base);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    autoScroll_.setInterval(kAutoScrollMilliseconds);
    connect(&autoScroll_, &QTimer::timeout, this, &RulesList::scrollWhileDragging);
}

void RulesList::measure() {
    const RuleRowWidget sample(view_, {}, nullptr);
    rowHeight_ = sample.sizeHint().height();
}

void RulesList::render() {
    arrange();
    if (const auto& focused = view_.focusedRule()) {
        const auto& rules = view_.store().config().rules;
        const auto rule = std::ranges::find(rules, *focused, &Rule::id);
        if (rule != rules.end()) {
            const auto index = static_cast<std::size_t>(rule - rules.begin());
            const RuleRowWidget* const present = row(index);
            if (present == nullptr || !present->holdsFocus()) reveal(index)->focusMatch();
            // Nothing is edited in a window that is not active; the focus comes with it.
            if (!isActiveWindow()) view_.setFocusedRule(std::nullopt);
        }
    }
    showInsertionLine();
}

void RulesList::showInsertionLine() {
    std::optional<QRect> line;
    for (const RuleRowWidget* row : shown_) {
        const auto edge = view_.insertionEdge(row->rule());
        if (!edge) continue;
        line = QRect(row->mapTo(this, QPoint()),
                     QSize(row->width(), SettingsWindow::insertionLineHeight));
        if (*edge == SettingsView::Edge::bottom) line->moveBottom(line->top() + row->height() - 1);
    }
    overlay_->display(line);
}

RuleRowWidget* RulesList::reveal(std::size_t index) {
    const int top = static_cast<int>(index) * rowHeight_;
    QScrollBar* const bar = verticalScrollBar();
    const int seen = viewport()->height();
    if (top < bar->value()) bar->setValue(top);
    if (top + rowHeight_ > bar->value() + seen) bar->setValue(top + rowHeight_ - seen);
    return row(index);
}

RuleRowWidget* RulesList::row(std::size_t index) const {
    const auto found = std::ranges::find(shown_, index, &RuleRowWidget::index);
    return found == shown_.end() ? nullptr : *found;
}

// A rule keeps its row; another one takes, if it can, the row that stood in its place, so that the
// focus stays where it was.
void RulesList::arrange() {
    const auto& rules = view_.store().config().rules;
    const int seen = viewport()->height();
    QScrollBar* const bar = verticalScrollBar();
    bar->setSingleStep(rowHeight_ / 2);
    bar->setPageStep(seen);
    bar->setRange(0, std::max(0, static_cast<int>(count()) * rowHeight_ - seen));

    const auto first = static_cast<std::size_t>(bar->value() / rowHeight_);
    const auto last =
        std::min(count(), static_cast<std::size_t>((bar->value() + seen) / rowHeight_) + 1);
    std::vector<std::size_t> wanted;
    for (std::size_t i = first; i < last; ++i) wanted.push_back(i);
    std::vector<RuleRowWidget*> unused = rows_;
    std::vector<std::pair<std::size_t, RuleRowWidget*>> placed;
    std::erase_if(unused, [&](RuleRowWidget* row) {
        if (row->isHidden()) return false;
        const auto rule = std::ranges::find(rules, row->rule(), &Rule::id);
        if (rule == rules.end()) return false;
        const auto index = static_cast<std::size_t>(rule - rules.begin());
        const bool isSeen = index >= first && index < last;
        if (!isSeen && !row->holdsFocus()) return false;
        std::erase(wanted, index);
        placed.emplace_back(index, row);
        return true;
    });
    for (const std::size_t index : wanted) placed.emplace_back(index, unusedRow(unused, index));

    std::ranges::sort(placed);
    shown_.clear();
    for (const auto& [index, row] : placed) {
        row->bind(index);
        row->setGeometry(0, static_cast<int>(index) * rowHeight_ - bar->value(),
                         viewport()->width(), rowHeight_);
        row->show();
        shown_.push_back(row);
    }
    for (RuleRowWidget* row : unused) row->hide();
    chain();
}

RuleRowWidget* RulesList::unusedRow(std::vector<RuleRowWidget*>& unused, std::size_t index) {
    const auto take = [&](auto suits) -> RuleRowWidget* {
        const auto found = std::ranges::find_if(unused, suits);
        if (found == unused.end()) return nullptr;
        RuleRowWidget* const row = *found;
        unused.erase(found);
        return row;
    };
    if (auto* row = take([&](auto* candidate) {
            return !candidate->isHidden() && candidate->index() == index;
        })) {
        return row;
    }
    if (auto* row = take([](auto* candidate) { return !candidate->holdsFocus(); })) return row;
    auto* row = new RuleRowWidget(
        view_,
        {.drag = [this](RuleRowWidget& dragged) { drag(dragged); },
         .move = [this](RuleRowWidget& moved, std::ptrdiff_t offset) { move(moved, offset); },
         .step = [this](RuleRowWidget& left, std::ptrdiff_t offset) { step(left, offset); }},
        viewport());
    rows_.push_back(row);
    return row;
}

// The Tab key goes through the rows as they are seen.
void RulesList::chain() {
    std::vector<QWidget*> controls;
    for (const RuleRowWidget* row : shown_) {
        const auto ofRow = row->controls();
        controls.insert(controls.end(), ofRow.begin(), ofRow.end());
    }
    if (controls == chained_) return;
    chained_ = std::move(controls);
    QWidget* last = this;
    for (QWidget* control : chained_) {
        setTabOrder(last, control);
        last = control;
    }
}

bool RulesList::focusNextPrevChild(bool next) {
    for (const RuleRowWidget* row : shown_) {
        if (!row->holdsFocus()) continue;
        const auto controls = row->controls();
        const bool leaves = row->focusWidget() == (next ? controls.back() : controls.front());
        const std::size_t index = row->index();
        if (!leaves || (next ? index + 1 == count() : index == 0)) break;
        const auto others = reveal(next ? index + 1 : index - 1)->controls();
        (next ? others.front() : others.back())
            ->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return QAbstractScrollArea::focusNextPrevChild(next);
}

void RulesList::resizeEvent(QResizeEvent*) {
    overlay_->setGeometry(rect());
    overlay_->raise();
    arrange();
}

void RulesList::scrollContentsBy(int, int) {
    arrange();
    showInsertionLine();
}

void RulesList::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        measure();
        arrange();
    }
}

void RulesList::move(RuleRowWidget& row, std::ptrdiff_t offset) {
    const Uuid rule = row.rule();
    view_.move(rule, offset);
    arrange();
    const auto& rules = view_.store().config().rules;
    const auto moved = std::ranges::find(rules, rule, &Rule::id);
    if (moved != rules.end()) reveal(static_cast<std::size_t>(moved - rules.begin()));
}

void RulesList::step(RuleRowWidget& row, std::ptrdiff_t offset) {
    const auto index = static_cast<std::ptrdiff_t>(row.index()) + offset;
    if (index < 0 || static_cast<std::size_t>(index) >= count()) return;
    reveal(static_cast<std::size_t>(index))->focusMatch();
}

void RulesList::drag(RuleRowWidget& row) {
    const QPointer<RulesList> alive(this);
    auto* carried = new QMimeData;
    const QString text = qt(view_.beginDrag(row.rule()));
    carried->setText(text);
    carried->setData(kRuleMimeType, text.toUtf8());
    auto* motion = new QDrag(this);  // deleted by the toolkit
    motion->setMimeData(carried);
    motion->setPixmap(row.grab());
    motion->setHotSpot(row.mapFromGlobal(QCursor::pos()));
    motion->exec(Qt::MoveAction);
    if (!alive) return;
    autoScroll_.stop();
    view_.endDrag();
}

std::optional<Uuid> RulesList::ruleAt(int y) const {
    const int index = (y + verticalScrollBar()->value()) / rowHeight_;
    if (index < 0 || static_cast<std::size_t>(index) >= count()) return std::nullopt;
    return view_.store().config().rules[static_cast<std::size_t>(index)].id;
}

void RulesList::setTarget(const std::optional<Uuid>& rule) {
    if (rule == target_) return;
    const auto left = std::exchange(target_, rule);
    if (rule) view_.setDropTargeted(*rule, true);
    if (left) view_.setDropTargeted(*left, false);
}

// A text from elsewhere changes nothing here, and must not vanish where it comes from.
static void accept(QDropEvent& event) {
    const bool isRule = event.mimeData()->hasFormat(kRuleMimeType);
    const bool canCopy = event.possibleActions().testFlag(Qt::CopyAction);
    event.setDropAction(isRule || !canCopy ? event.proposedAction() : Qt::CopyAction);
    event.accept();
}

void RulesList::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasText()) accept(*event);
}

void RulesList::dragMoveEvent(QDragMoveEvent* event) {
    pointerY_ = event->position().toPoint().y();
    setTarget(ruleAt(pointerY_));
    const bool isNearEdge =
        pointerY_ < kAutoScrollMargin || pointerY_ > viewport()->height() - kAutoScrollMargin;
    if (!isNearEdge) autoScroll_.stop();
    if (isNearEdge && !autoScroll_.isActive()) autoScroll_.start();
    accept(*event);
}

// The nearer to the edge, the faster.
void RulesList::scrollWhileDragging() {
    const int above = kAutoScrollMargin - pointerY_;
    const int below = pointerY_ - (viewport()->height() - kAutoScrollMargin);
    const int depth = std::min(std::max(above, below), kAutoScrollMargin);
    const int step = std::max(1, depth / 3);
    verticalScrollBar()->setValue(verticalScrollBar()->value() + (above > 0 ? -step : step));
    setTarget(ruleAt(pointerY_));
}

void RulesList::dragLeaveEvent(QDragLeaveEvent*) {
    autoScroll_.stop();
    setTarget(std::nullopt);
}

void RulesList::dropEvent(QDropEvent* event) {
    autoScroll_.stop();
    target_.reset();
    view_.drop(ruleAt(event->position().toPoint().y()));
    accept(*event);
}

}  // namespace ferrivane
