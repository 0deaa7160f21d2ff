#pragma once

#include "app/AlertDialog.h"
#include "app/ContentView.h"
#include "app/Spinner.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
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

  AlertDialog* alert() {
    turn();
    auto* const dialog = view.findChild<AlertDialog*>();
    return dialog && dialog->isVisible() ? dialog : nullptr;
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
