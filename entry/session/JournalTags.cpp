#include "entry/session/JournalTags.h"

#include "platform/Registration.h"

#include <utility>

namespace quillo {

JournalTags::JournalTags(TagSource source) : m_source(std::move(source)) {}

JournalTags::~JournalTags() = default;

const QStringList& JournalTags::tags() {
  if (!m_isAsked && m_source) {
    m_isAsked = true;
    m_question = m_source([this](const QStringList& tags) {
      m_tags = tags;
      Q_EMIT didBecomeKnown();
    });
  }
  return m_tags;
}

void JournalTags::forget() {
  m_question.reset();
  m_tags = {};
  m_isAsked = false;
}

}  // namespace quillo
