#pragma once

#include <QPointer>
#include <QWidget>
#include <array>
#include <memory>

#include "model/AudioEditorModel.h"

class QStackedLayout;
class QVBoxLayout;

namespace quibel {

class AlertSheet;
class Header;
class StatusArea;
class WelcomeScreen;
class WorkspaceScreen;

/// What fills the window: the header, one of the two screens and the status
/// area on a gradient, the drop target and the alert. It owns the window's one
/// model. However much changes in the model in one turn of the event loop, all
/// views read it afresh once, in the next.
class ContentView : public QWidget {
  Q_OBJECT

 public:
  static constexpr QSize minimumContentSize{780, 580};
  static constexpr int padding = 28;

  explicit ContentView(QWidget* parent = nullptr);
  /// With a model made elsewhere.
  explicit ContentView(std::shared_ptr<AudioEditorModel> editor, QWidget* parent = nullptr);
  ~ContentView() override;

  AudioEditorModel& editor() { return *editor_; }

  /// Never below minimumContentSize; more only where the fonts need it.
  QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void scheduleRefresh();
  void refresh();
  void showScreen(QWidget* screen);
  void refreshAlert();
  void fillSmallestWindow();
  void makeAlert();
  void raiseAlert(const QString& message);
  void lowerAlert();
  std::array<QWidget*, 3> rows() const;
  void setRowsReachable(bool reachable);

  std::shared_ptr<AudioEditorModel> editor_;
  QVBoxLayout* column_;
  Header* header_;
  QWidget* screens_;
  QStackedLayout* screenStack_;
  WelcomeScreen* welcome_;
  WorkspaceScreen* workspace_;
  QWidget* shownScreen_ = nullptr;
  StatusArea* status_;
  AlertSheet* alert_ = nullptr;
  QPointer<QWidget> focusBelowAlert_;
  bool refreshScheduled_ = false;
  ChangeAnnouncer::Subscription subscription_;
};

}  // namespace quibel
