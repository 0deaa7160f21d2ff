#include "app/ContentView.h"

#include <QAccessible>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QStackedLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <ranges>
#include <utility>

#include "app/AlertSheet.h"
#include "app/Header.h"
#include "app/ShellAccessible.h"
#include "app/StatusArea.h"
#include "desktop/Urls.h"
#include "views/ActionButton.h"
#include "views/DisplayText.h"
#include "views/Theme.h"
#include "views/WelcomeScreen.h"
#include "views/WorkspaceScreen.h"

namespace quibel {
namespace {

bool carriesFile(const QMimeData& data) {
  return std::ranges::any_of(data.urls(),
                             [](const QUrl& url) { return desktop::fileURL(url).has_value(); });
}

}  // namespace

ContentView::ContentView(QWidget* parent)
    : ContentView(std::make_shared<AudioEditorModel>(), parent) {}

ContentView::ContentView(std::shared_ptr<AudioEditorModel> editor, QWidget* parent)
    : QWidget(parent), editor_(std::move(editor)) {
  installShellAccessibility();
  header_ = new Header(editor_);
  welcome_ = new WelcomeScreen(editor_);
  workspace_ = new WorkspaceScreen(editor_);
  status_ = new StatusArea;
  screens_ = new QWidget;
  screenStack_ = new QStackedLayout(screens_);
  screenStack_->addWidget(welcome_);
  screenStack_->addWidget(workspace_);

  column_ = new QVBoxLayout(this);
  column_->setContentsMargins(padding, padding, padding, padding);
  column_->setSpacing(20);
  // Where the screen does not take all the room, the three rows stay together
  // in the middle of the window.
  column_->addStretch();
  column_->addWidget(header_);
  column_->addWidget(screens_);
  column_->addWidget(status_);
  column_->addStretch();

  setAcceptDrops(true);
  subscription_ = editor_->objectWillChange().subscribe([this] { scheduleRefresh(); });
  refresh();
  fillSmallestWindow();
}

ContentView::~ContentView() = default;

void ContentView::fillSmallestWindow() {
  // The status area takes what the workspace leaves of the smallest window, so that
  // nothing moves there when the screen changes.
  const int hint = status_->minimumSizeHint().height();
  const int given = std::max(hint, status_->minimumHeight());
  const int left = minimumContentSize.height() - layout()->totalMinimumSize().height();
  status_->setMinimumHeight(std::max(hint, given + left));
}

QSize ContentView::minimumSizeHint() const {
  return layout()->totalMinimumSize().expandedTo(minimumContentSize);
}

void ContentView::scheduleRefresh() {
  if (refreshScheduled_) return;
  refreshScheduled_ = true;
  QMetaObject::invokeMethod(this, &ContentView::refresh, Qt::QueuedConnection);
}

void ContentView::refresh() {
  refreshScheduled_ = false;
  const bool hasSong = editor_->audioURL().has_value();
  header_->refresh();
  if (hasSong) workspace_->refresh();
  showScreen(hasSong ? static_cast<QWidget*>(workspace_) : welcome_);
  if (!editor_->isBusy()) {
    status_->showStatus(displayStatus(editor_->status()));
  } else if (editor_->isExporting()) {
    status_->showProgress(tr("Creando tono…"));
  } else {
    status_->showProgress(tr("Analizando audio…"));
  }
  refreshAlert();
}

void ContentView::showScreen(QWidget* screen) {
  // Setting a stretch lays out the whole window, also where it is the same as before.
  if (std::exchange(shownScreen_, screen) == screen) return;
  const bool focusShown = showsFocus(window()->focusWidget());
  screenStack_->setCurrentWidget(screen);
  if (auto* const focused = window()->focusWidget()) giveFocus(*focused, focusShown);
  // The welcome screen takes all the room there is, the workspace what it needs.
  const bool fills = screen == welcome_;
  screens_->setSizePolicy(QSizePolicy::Expanding,
                          fills ? QSizePolicy::Expanding : QSizePolicy::Fixed);
  column_->setStretchFactor(screens_, fills ? 1 : 0);
}

void ContentView::refreshAlert() {
  const bool raised = editor_->showAlert();
  if (raised && !alert_) makeAlert();
  if (!alert_) return;
  const auto message = displayText(editor_->alertText());
  // Another message is another alert, so that it is read out too.
  if (!alert_->isHidden() && (!raised || message != alert_->message())) lowerAlert();
  if (raised && alert_->isHidden()) raiseAlert(message);
}

void ContentView::makeAlert() {
  alert_ = new AlertSheet(this);
  connect(alert_, &AlertSheet::accepted, this, [this] { editor_->showAlertBinding().set(false); });
  // Above the rows, which stay in their order, and below the window's controls.
  alert_->lower();
  for (auto* row : rows() | std::views::reverse) row->lower();
}

void ContentView::raiseAlert(const QString& message) {
  alert_->setMessage(message);
  focusBelowAlert_ = window()->focusWidget();
  alert_->show();
  giveFocus(alert_->acceptButton(), showsFocus(focusBelowAlert_));
  setRowsReachable(false);
}

void ContentView::lowerAlert() {
  setRowsReachable(true);
  if (focusBelowAlert_) giveFocus(*focusBelowAlert_, alert_->acceptButton().isKeyboardFocused());
  alert_->hide();
}

std::array<QWidget*, 3> ContentView::rows() const { return {header_, screens_, status_}; }

void ContentView::setRowsReachable(bool reachable) {
  for (auto* row : rows()) {
    row->setEnabled(reachable);
    if (!QAccessible::isActive()) continue;
    QAccessibleEvent changed(row,
                             reachable ? QAccessible::ObjectCreated : QAccessible::ObjectDestroyed);
    QAccessible::updateAccessibility(&changed);
  }
}

bool ContentView::event(QEvent* event) {
  if (event->type() == QEvent::LayoutRequest) fillSmallestWindow();
  // Before Qt looks for what could have the focus, and does not show it.
  if (event->type() == QEvent::WindowActivate && !window()->focusWidget()) {
    welcome_->focusButton();
  }
  return QWidget::event(event);
}

void ContentView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const auto palette = colors(this->palette());
  QLinearGradient gradient(0, 0, 0, height());
  gradient.setColorAt(0, palette.windowBackground);
  gradient.setColorAt(1, blended(palette.accent, 0.09, palette.windowBackground));
  painter.fillRect(rect(), gradient);
  if (window()->isMaximized()) return;
  // Where the window ends, as nothing else draws a frame around it.
  painter.setPen(withOpacity(palette.text, 0.14));
  painter.setRenderHint(QPainter::Antialiasing);
  painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void ContentView::dragEnterEvent(QDragEnterEvent* event) {
  if (!carriesFile(*event->mimeData())) return event->ignore();
  event->setDropAction(Qt::CopyAction);
  event->accept();
  welcome_->setDropping(true);
}

void ContentView::dragLeaveEvent(QDragLeaveEvent*) { welcome_->setDropping(false); }

void ContentView::dropEvent(QDropEvent* event) {
  welcome_->setDropping(false);
  if (!carriesFile(*event->mimeData())) return event->ignore();
  // Always a copy: a source that offers to move must not delete the song.
  event->setDropAction(Qt::CopyAction);
  event->accept();
  // Of several items the first one counts, and nothing happens if it is no file.
  const auto file = desktop::fileURL(event->mimeData()->urls().front());
  if (!file) return;
  QMetaObject::invokeMethod(
      this, [editor = editor_, file = *file] { editor->load(file); }, Qt::QueuedConnection);
}

}  // namespace quibel
