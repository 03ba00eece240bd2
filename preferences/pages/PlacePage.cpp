#include "preferences/pages/PlacePage.h"

#include "config/Keys.h"
#include "config/SettingText.h"
#include "controls/Fonts.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/Form.h"
#include "preferences/model/PreferenceStore.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QUrl>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

enum Temperature { Celsius, Fahrenheit };
enum Position { DesktopService, Receiver };

// A serial port, a socket or a recording, as the position's provider tells them apart.
QString problemOfReceiver(const QString& text) {
  const QUrl url(text, QUrl::StrictMode);
  if (text.startsWith(u"serial:"_s) && text.size() > 7) return {};
  if (text.startsWith(u"socket:"_s) && !url.host().isEmpty() && url.port() > 0) return {};
  if (text.startsWith(u'/')) return {};
  return u"A receiver is serial:/dev/ttyUSB0, socket://HOST:PORT or the path of a recording."_s;
}

QString problemOfWeatherService(const QString& text) {
  const QUrl url(text, QUrl::StrictMode);
  const bool isWeb = url.scheme() == u"https" || url.scheme() == u"http";
  return url.isValid() && isWeb && !url.host().isEmpty() ? QString()
                                                         : u"An address that begins with https:// is needed."_s;
}

}  // namespace

PlacePage::PlacePage(PreferenceStore& store, QWidget* parent) : PreferencePage(u"Place and Weather"_s, store, parent) {
  addSwitch(u"Add to new entries"_s, Key::addLocationAutomatically)
      ->setNote(u"An entry's window has a switch of its own for each entry."_s);
  addTemperature();
  addPosition();
  FormRow* weather = addText(u"Weather service"_s, Key::weatherServiceURL, problemOfWeatherService);
  qobject_cast<QLineEdit*>(weather->firstField())->setPlaceholderText(u"api.met.no, the public one"_s);

  auto* box = new QFrame(this);
  box->setObjectName(u"summary"_s);
  auto* lines = new QVBoxLayout(box);
  lines->setContentsMargins(15, 11, 15, 11);
  lines->addWidget(
      makeFormLabel(u"What is sent to whom: the position comes from this computer's own location service "
                    "or receiver. The name of the place is looked up in a table on this computer. The "
                    "weather service gets the coordinates, to about ten metres, and this program's name; "
                    "nothing of what you write. With the switch off, nobody is asked for anything."_s,
                    u"note"_s, box));
  column().addWidget(box);
  column().addStretch();
}

void PlacePage::addTemperature() {
  auto* scale = new ChoiceBox(this);
  scale->setObjectName(Key::useFahrenheitTempScale);
  scale->insertItem(Celsius, u"Celsius"_s);
  scale->insertItem(Fahrenheit, u"Fahrenheit"_s);
  FormRow* row = form().addRow(u"Temperature in"_s, {scale});
  connect(scale, &QComboBox::activated, this, [this, row](int index) {
    QString reason;
    store().set(Key::useFahrenheitTempScale, PropertyListValue(index == Fahrenheit), &reason);
    row->setError(reason);
  });
  addShower(
      [this, scale] { scale->setCurrentIndex(store().isOn(Key::useFahrenheitTempScale) ? Fahrenheit : Celsius); });
}

void PlacePage::addPosition() {
  auto* source = new ChoiceBox(this);
  source->setObjectName(u"PositionSource"_s);
  source->insertItem(DesktopService, u"The desktop's location service"_s);
  source->insertItem(Receiver, u"A receiver (NMEA)"_s);
  FormRow* sourceRow = form().addRow(u"Position from"_s, {source});
  FormRow* receiver = addText(u"Receiver"_s, Key::locationNMEASource, problemOfReceiver);
  auto* field = qobject_cast<QLineEdit*>(receiver->firstField());
  field->setPlaceholderText(u"serial:/dev/ttyUSB0"_s);
  connect(source, &QComboBox::activated, this, [this, sourceRow, receiver, field](int index) {
    form().setRowVisible(*receiver, index == Receiver);
    QString reason;
    // A receiver is only one once it is named.
    if (index == DesktopService) {
      field->clear();
      receiver->setError({});
      store().set(Key::locationNMEASource, std::nullopt, &reason);
    } else {
      field->setFocus();
    }
    sourceRow->setError(reason);
  });
  addShower([this, source, receiver, field] {
    const bool isNamed = !store().text(Key::locationNMEASource).isEmpty();
    // The choice of a receiver that is still to be named stays.
    if (!isNamed && (field->hasFocus() || field->isModified())) return;
    source->setCurrentIndex(isNamed ? Receiver : DesktopService);
    form().setRowVisible(*receiver, isNamed);
  });
}

}  // namespace quillo
