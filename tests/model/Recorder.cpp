#include "tests/model/Recorder.h"

#include <cstddef>
#include <sstream>

namespace quibel::test {
namespace {

template <class T>
std::string line(const std::string& name, const T& value) {
  std::ostringstream text;
  text << std::boolalpha << name << " = " << value;
  return text.str();
}

}  // namespace

Recorder::Recorder(AudioEditorModel& model, fake::Journal& journal)
    : model_(model), journal_(journal), last_(snapshot()) {
  subscription_ = model.objectWillChange().subscribe([this] {
    writePending();
    isPending_ = true;
  });
  journal_.beforeRecord = [this] { writePending(); };
}

Recorder::~Recorder() { journal_.beforeRecord = nullptr; }

void Recorder::restart() {
  writePending();
  journal_.entries.clear();
}

std::vector<std::string> Recorder::events() {
  writePending();
  return journal_.entries;
}

Recorder::Snapshot Recorder::snapshot() const {
  return {
      line("audioURL", model_.audioURL() ? model_.audioURL()->path().string() : "none"),
      line("samples", model_.samples().size()),
      line("duration", model_.duration()),
      line("start", model_.start()),
      line("end", model_.end()),
      line("playhead", model_.playhead()),
      line("isPlaying", model_.isPlaying()),
      line("isLoading", model_.isLoading()),
      line("isExporting", model_.isExporting()),
      line("status", model_.status()),
      line("showAlert", model_.showAlert()),
      line("alertText", model_.alertText()),
  };
}

void Recorder::writePending() {
  if (!isPending_) return;
  isPending_ = false;
  const auto now = snapshot();
  bool changed = false;
  for (std::size_t i = 0; i < now.size(); ++i) {
    if (now[i] == last_[i]) continue;
    journal_.entries.push_back(now[i]);
    changed = true;
  }
  if (!changed) journal_.entries.emplace_back("unchanged");
  last_ = now;
}

}  // namespace quibel::test
