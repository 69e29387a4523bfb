#include "voxtrel/platform/linux/windows/QtAlerts.h"

#include "voxtrel/platform/linux/windows/AlertBox.h"
#include "voxtrel/platform/linux/windows/DesktopColors.h"

namespace voxtrel {

QtAlerts::~QtAlerts() {
  for (const QPointer<AlertBox>& box : boxes_) delete box.data();
}

void QtAlerts::runModal(const Alert& alert, std::function<void(std::size_t button)> onAnswer) {
  colors_.follow();
  std::erase_if(boxes_, [](const QPointer<AlertBox>& box) { return box.isNull(); });
  auto* const box = new AlertBox(alert, std::move(onAnswer));
  boxes_.emplace_back(box);
  box->comeUp();
}

}  // namespace voxtrel
