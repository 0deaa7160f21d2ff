#include "app/Header.h"

#include <QHBoxLayout>

#include "views/ActionButton.h"
#include "views/TextLabel.h"

namespace quibel {

Header::Header(std::shared_ptr<AudioEditorModel> editor, QWidget* parent)
    : QWidget(parent), editor_(std::move(editor)) {
  auto* const titles = new QVBoxLayout;
  titles->setSpacing(textSpacing);
  titles->addWidget(new TextLabel(TextStyle::largeTitle, TextLabel::Role::primary,
                                  TextLabel::Feature::none, tr("Quibel"), this));
  titles->addWidget(new TextLabel(TextStyle::body, TextLabel::Role::secondary,
                                  TextLabel::Feature::none,
                                  tr("Tu canción favorita, convertida en tono para iPhone"), this));

  change_ = new ActionButton(ActionButton::Prominence::standard, ActionButton::Size::regular,
                             tr("Cambiar canción…"), this);
  change_->setShortcut(QKeySequence::Open);
  connect(change_, &QAbstractButton::clicked, this, [this] { editor_->chooseAudio(); });

  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins({});
  row->setSpacing(defaultSpacing);
  row->addLayout(titles);
  row->addStretch(1);
  row->addWidget(change_, 0, Qt::AlignVCenter);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Header::refresh() { change_->setVisible(editor_->audioURL().has_value()); }

}  // namespace quibel
