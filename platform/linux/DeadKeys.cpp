#include "platform/linux/DeadKeys.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <array>

namespace quillo {

namespace {

struct Row {
  quint32 keysym;
  DeadKey key;
};

constexpr std::array rows{
    Row{XKB_KEY_dead_grave, {0x0300, u'`'}},
    Row{XKB_KEY_dead_acute, {0x0301, 0x00B4}},
    Row{XKB_KEY_dead_circumflex, {0x0302, u'^'}},
    Row{XKB_KEY_dead_tilde, {0x0303, u'~'}},
    Row{XKB_KEY_dead_macron, {0x0304, 0x00AF}},
    Row{XKB_KEY_dead_breve, {0x0306, 0x02D8}},
    Row{XKB_KEY_dead_abovedot, {0x0307, 0x02D9}},
    Row{XKB_KEY_dead_diaeresis, {0x0308, 0x00A8}},
    Row{XKB_KEY_dead_hook, {0x0309, 0x02C0}},
    Row{XKB_KEY_dead_abovering, {0x030A, 0x02DA}},
    Row{XKB_KEY_dead_doubleacute, {0x030B, 0x02DD}},
    Row{XKB_KEY_dead_caron, {0x030C, 0x02C7}},
    Row{XKB_KEY_dead_doublegrave, {0x030F, 0x02F5}},
    Row{XKB_KEY_dead_invertedbreve, {0x0311, 0x0311}},
    Row{XKB_KEY_dead_abovecomma, {0x0313, 0x1FBF}},
    Row{XKB_KEY_dead_abovereversedcomma, {0x0314, 0x1FFE}},
    Row{XKB_KEY_dead_horn, {0x031B, 0x031B}},
    Row{XKB_KEY_dead_belowdot, {0x0323, u'.'}},
    Row{XKB_KEY_dead_belowdiaeresis, {0x0324, 0x0324}},
    Row{XKB_KEY_dead_belowring, {0x0325, 0x02F3}},
    Row{XKB_KEY_dead_belowcomma, {0x0326, u','}},
    Row{XKB_KEY_dead_cedilla, {0x0327, 0x00B8}},
    Row{XKB_KEY_dead_ogonek, {0x0328, 0x02DB}},
    Row{XKB_KEY_dead_belowcircumflex, {0x032D, 0xA788}},
    Row{XKB_KEY_dead_belowbreve, {0x032E, 0x032E}},
    Row{XKB_KEY_dead_belowtilde, {0x0330, 0x02F7}},
    Row{XKB_KEY_dead_belowmacron, {0x0331, 0x02CD}},
    Row{XKB_KEY_dead_stroke, {0x0338, u'/'}},
    Row{XKB_KEY_dead_iota, {0x0345, 0x037A}},
    Row{XKB_KEY_dead_voiced_sound, {0x3099, 0x309B}},
    Row{XKB_KEY_dead_semivoiced_sound, {0x309A, 0x309C}},
};

}  // namespace

std::optional<DeadKey> deadKeyOfKeysym(quint32 keysym) {
  for (const Row& row : rows)
    if (row.keysym == keysym) return row.key;
  return std::nullopt;
}

QString composedCharacters(char16_t combining, char32_t character) {
  char16_t spacing = combining;
  for (const Row& row : rows)
    if (row.key.combining == combining) spacing = row.key.spacing;
  if (character == U' ' || character == spacing) return QString(QChar(spacing));
  const QString letter = QString::fromUcs4(&character, 1);
  const QString composed = (letter + QChar(combining)).normalized(QString::NormalizationForm_C);
  return composed.size() <= letter.size() ? composed : QChar(spacing) + letter;
}

}  // namespace quillo
