// Any bytes as calls of a tray host to the menu, between changes of its rows: what is said about a row is
// true, and only a row that can be chosen acts, once for all clicks before it acts.

#include <QCoreApplication>
#include <array>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "fuzz/FuzzEntry.h"
#include "voxtrel/platform/linux/tray/MenuObject.h"

using namespace voxtrel;

namespace {

void startQt() {
  static int count = 1;
  static char name[] = "fuzz";
  static char* arguments[] = {name, nullptr};
  static const QCoreApplication kApplication(count, arguments);
}

/// The bytes, taken one by one; zeros follow them.
/// Thread: one.  Borrows: the bytes.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool isAtEnd() const { return left_ == 0; }
  unsigned next() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  unsigned below(unsigned limit) { return next() % limit; }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

/// A menu, its host, and what must be true of them.
/// Thread: one.  Owns: the menu.
class Host {
 public:
  explicit Host(Choices& choices) : choices_(choices) { setRows(); }

  void act();
  /// Lets chosen rows act.
  void settle();

 private:
  void setRows();
  MenuItem row();
  int id();
  QList<int> ids();
  QStringList names();
  QString type();
  bool isKnown(int id) const { return id == 0 || rowOf(id) < menu_.rows().size(); }
  std::size_t rowOf(int id) const;
  void noteClick(int id, const QString& type);
  void getLayout();
  void getGroup();
  void events();

  Choices& choices_;
  MenuObject menu_;
  int first_ = 1;                ///< the first row's id
  std::map<int, int> expected_;  ///< by id: whether it must act
  std::map<int, int> acted_;
};

MenuItem Host::row() {
  MenuItem row;
  row.title = std::string(choices_.below(4), static_cast<char>(choices_.next()));
  row.enabled = choices_.below(3) != 0;
  row.separator = choices_.below(5) == 0;
  if (choices_.below(4) == 0) row.keyEquivalent = ",";
  return row;
}

void Host::setRows() {
  settle();
  std::vector<MenuItem> rows(choices_.below(7));
  first_ += static_cast<int>(menu_.rows().size());  // new rows have new ids
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i] = row();
    rows[i].action = [this, id = first_ + static_cast<int>(i)] { ++acted_[id]; };
  }
  menu_.setRows(std::move(rows));
}

std::size_t Host::rowOf(int id) const {
  if (id < first_) return std::numeric_limits<std::size_t>::max();
  return static_cast<std::size_t>(id) - static_cast<std::size_t>(first_);
}

int Host::id() {
  using Limits = std::numeric_limits<int>;
  constexpr std::array<int, 5> kOdd = {0, -1, Limits::max(), Limits::min(), 1};
  const unsigned choice = choices_.below(12);
  if (choice < kOdd.size()) return kOdd.at(choice);
  return first_ + static_cast<int>(choices_.below(8));
}

QList<int> Host::ids() {
  QList<int> list;
  for (unsigned left = choices_.below(5); left > 0; --left) list.append(id());
  return list;
}

QStringList Host::names() {
  static const QStringList kNames = {"label", "enabled", "type", "shortcut", "visible", "", "x"};
  QStringList list;
  for (unsigned left = choices_.below(3); left > 0; --left) list.append(kNames[choices_.below(7)]);
  return list;
}

QString Host::type() {
  static const QStringList kTypes = {"clicked", "opened", "hovered", "closed", ""};
  return kTypes[choices_.below(5)];
}

void Host::getLayout() {
  const int wanted = id();
  const int depth = static_cast<int>(choices_.below(4)) - 1;
  MenuNode node;
  node.id = -7;
  menu_.GetLayout(wanted, depth, names(), node);
  require(node.id == (isKnown(wanted) ? wanted : -7),
          "the layout is of the row that was asked for");
  const bool hasRows = wanted == 0 && depth != 0;
  require(node.children.size() == (hasRows ? static_cast<qsizetype>(menu_.rows().size()) : 0),
          "the root has all rows");
  for (qsizetype row = 0; row < node.children.size(); ++row) {
    require(qvariant_cast<MenuNode>(node.children[row]).id == first_ + static_cast<int>(row),
            "rows have their ids in order");
  }
}

void Host::getGroup() {
  const QList<int> wanted = ids();
  const auto group = menu_.GetGroupProperties(wanted, names());
  for (const MenuRowProperties& row : group) {
    require(isKnown(row.id) && (wanted.isEmpty() || wanted.contains(row.id)),
            "only rows that were asked for are told");
  }
  if (wanted.isEmpty()) {
    require(group.size() == static_cast<qsizetype>(menu_.rows().size()) + 1, "or all of them");
  }
  menu_.GetProperty(id(), choices_.below(2) == 0 ? "label" : "nothing");
}

void Host::noteClick(int id, const QString& type) {
  const std::size_t row = rowOf(id);
  if (type == "clicked" && id != 0 && row < menu_.rows().size() && menu_.rows()[row].enabled) {
    expected_[id] = 1;
  }
}

void Host::events() {
  QList<MenuEvent> events;
  qsizetype unknown = 0;
  for (unsigned left = choices_.below(6); left > 0; --left) {
    events.append(MenuEvent{id(), type(), QDBusVariant(), choices_.next()});
    noteClick(events.back().id, events.back().type);
    if (!isKnown(events.back().id)) ++unknown;
  }
  require(menu_.EventGroup(events).size() == unknown, "unknown ids are named");
}

void Host::act() {
  const unsigned action = choices_.below(8);
  if (action == 0) return setRows();
  if (action == 1) {
    menu_.setTitle(choices_.below(8), std::string(1, static_cast<char>(choices_.next())));
    return;
  }
  if (action == 2) return getLayout();
  if (action == 3) return getGroup();
  if (action == 4) return events();
  if (action == 5) return settle();
  if (action == 6) {
    const int clicked = id();
    const QString kind = type();
    noteClick(clicked, kind);
    return menu_.Event(clicked, kind, QDBusVariant(), 0);
  }
  menu_.AboutToShow(id());
  QList<int> errors;
  menu_.AboutToShowGroup(ids(), errors);
}

void Host::settle() {
  QCoreApplication::processEvents();
  require(acted_ == expected_, "rows act once for their clicks, and no others do");
  acted_.clear();
  expected_.clear();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  startQt();
  Choices choices(data, size);
  Host host(choices);
  while (!choices.isAtEnd()) host.act();
  host.settle();
  return 0;
}
