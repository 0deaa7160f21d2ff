#pragma once

#include "app/AlertSheet.h"
#include "app/ContentView.h"
#include "app/Spinner.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "views/HandleView.h"
#include "views/WelcomeScreen.h"
#include "views/WorkspaceScreen.h"

namespace quibel {

/// The root view on a model that the test steps by hand.
class ContentFixture : public EditorFixture {
 protected:
  void SetUp() override {
    view.resize(ContentView::minimumContentSize);
    view.show();
    turn();
  }

  /// Lets the views read the model and be laid out, from the inside outwards in later turns.
  static void layOut() {
    for (int depth = 0; depth < 10; ++depth) turn();
  }

  bool showsWelcome() { return view.findChild<WelcomeScreen*>()->isVisible(); }
  bool showsWorkspace() { return view.findChild<WorkspaceScreen*>()->isVisible(); }

  /// The text below the screen, whatever shows it.
  QString statusLine() {
    turn();
    for (auto* found : view.findChildren<QLabel*>()) {
      if (found->isVisible() && found->mapTo(&view, QPoint()).y() > 490) return found->text();
    }
    return QStringLiteral("no status line");
  }

  bool showsProgress() { return view.findChild<Spinner*>()->isVisible(); }

  AlertSheet* alert() {
    turn();
    auto* const sheet = view.findChild<AlertSheet*>();
    return sheet && sheet->isVisible() ? sheet : nullptr;
  }

  /// Has a load fail, with that reason if one is given, and returns the alert.
  AlertSheet* failToLoad(const char* reason = nullptr) {
    if (reason) machine.songs["/falta.mp3"].openError = platform::Error(reason);
    model->load(platform::FileURL("/falta.mp3"));
    machine.settle();
    return alert();
  }

  QAbstractButton* find(const char* title) { return button(view, title); }
  QWidget* handle(const char* name) {
    for (auto* found : view.findChildren<HandleView*>()) {
      if (found->accessibleName() == QString::fromUtf8(name)) return found;
    }
    return nullptr;
  }

  void startExport() {
    machine.savePanelAnswer = platform::FileURL("/tonos/a.m4r");
    model->export_();
  }

  void TearDown() override {
    for (const auto& session : machine.sessions) session->abandon();
  }

  ContentView view{model};
};

}  // namespace quibel
