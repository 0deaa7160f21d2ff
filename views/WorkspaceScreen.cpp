#include "views/WorkspaceScreen.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <utility>

#include "model/Format.h"
#include "views/ActionButton.h"
#include "views/DisplayText.h"
#include "views/Panel.h"
#include "views/ReadOut.h"
#include "views/SymbolView.h"
#include "views/TextLabel.h"
#include "views/WaveformSelectionView.h"

namespace quibel {
namespace {

QHBoxLayout* makeRow(QWidget* row, int spacing) {
  auto* const layout = new QHBoxLayout(row);
  layout->setContentsMargins({});
  layout->setSpacing(spacing);
  return layout;
}

}  // namespace

WorkspaceScreen::WorkspaceScreen(std::shared_ptr<AudioEditorModel> editor, QWidget* parent)
    : QWidget(parent), editor_(std::move(editor)) {
  waveform_ = new WaveformSelectionView(editor_->startBinding(), editor_->endBinding());
  waveform_->setFixedHeight(220);

  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(22, 22, 22, 22);
  column->setSpacing(18);
  column->addWidget(makeFileRow());
  column->addWidget(waveform_);
  column->addWidget(makeReadOuts(), 0, Qt::AlignHCenter);
  column->addWidget(makeButtons());
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  refresh();
}

QWidget* WorkspaceScreen::makeFileRow() {
  auto* const row = new QWidget;
  auto* const layout = makeRow(row, defaultSpacing);
  fileName_ =
      new TextLabel(TextStyle::headline, TextLabel::Role::primary, TextLabel::Feature::elided);
  length_ = new TextLabel(TextStyle::body, TextLabel::Role::secondary,
                          TextLabel::Feature::monospacedDigits);
  layout->addWidget(new SymbolView(Symbol::musicNote, {16, 16}));
  layout->addWidget(fileName_);
  layout->addStretch(1);
  layout->addWidget(length_);
  return row;
}

QWidget* WorkspaceScreen::makeReadOuts() {
  constexpr int columnMinimum = 110;
  auto* const row = new QWidget;
  auto* const layout = makeRow(row, 60);
  start_ = new ReadOut(QStringLiteral("INICIO"), TextStyle::title3);
  duration_ = new ReadOut(tr("DURACIÓN"), TextStyle::title3Bold);
  duration_->setNote(tr("Máximo compatible: 40 s"));
  end_ = new ReadOut(QStringLiteral("FINAL"), TextStyle::title3);
  for (auto* column : {start_, end_}) column->setMinimumWidth(columnMinimum);
  for (auto* column : {start_, duration_, end_}) layout->addWidget(column, 0, Qt::AlignVCenter);
  return row;
}

QWidget* WorkspaceScreen::makeButtons() {
  auto* const row = new QWidget;
  auto* const layout = makeRow(row, defaultSpacing);
  loop_ = new ActionButton(ActionButton::Prominence::standard, ActionButton::Size::large, {});
  export_ = new ActionButton(ActionButton::Prominence::prominent, ActionButton::Size::large, {});
  export_->setFace(tr("Crear tono .m4r…"), Symbol::squareAndArrowDown);
  export_->setShortcut(QKeySequence::Save);
  connect(loop_, &QAbstractButton::clicked, this, [this] {
    focusIsLent_ = false;
    editor_->togglePreview();
  });
  connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, const QWidget* now) {
    if (now && now != loop_) focusIsLent_ = false;
  });
  connect(export_, &QAbstractButton::clicked, this, [this] { editor_->export_(); });
  layout->addWidget(loop_);
  layout->addStretch(1);
  layout->addWidget(export_);
  return row;
}

void WorkspaceScreen::refresh() {
  const auto& url = editor_->audioURL();
  fileName_->showText({{}, url ? displayFileName(url->lastPathComponent()) : QString()});
  length_->showText(displayText(format(editor_->duration())));
  waveform_->refresh(editor_->samples(), editor_->duration(), editor_->playhead());
  waveform_->setLoading(editor_->isLoading());
  start_->showTime(editor_->start());
  duration_->showTime(editor_->end() - editor_->start());
  end_->showTime(editor_->end());
  if (editor_->isPlaying()) {
    loop_->setFace(tr("Detener"), Symbol::stopFill);
  } else {
    loop_->setFace(tr("Escuchar en bucle"), Symbol::repeat);
  }
  setCanExport(!editor_->isBusy());
}

void WorkspaceScreen::setCanExport(bool canExport) {
  // A disabled button cannot keep the focus. Its neighbour has it meanwhile, and gives
  // it back unless something else was done with it.
  if (!canExport && window()->focusWidget() == export_) {
    giveFocus(*loop_, export_->isKeyboardFocused());
    focusIsLent_ = true;
  }
  export_->setEnabled(canExport);
  if (canExport && std::exchange(focusIsLent_, false)) {
    giveFocus(*export_, loop_->isKeyboardFocused());
  }
}

void WorkspaceScreen::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Space || event->modifiers() || event->isAutoRepeat()) {
    return event->ignore();
  }
  loop_->click();
}

void WorkspaceScreen::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  paintPanel(painter, *this, 0.8);
}

}  // namespace quibel
