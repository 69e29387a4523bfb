#include "platform/linux/QtFormWindows.h"

#include <QCoreApplication>

#include "platform/linux/DesktopColors.h"
#include "platform/linux/DownloadForm.h"
#include "platform/linux/QtFormWindow.h"
#include "platform/linux/SettingsForm.h"

namespace voxtrel {

namespace {

template <typename Content, typename Form>
std::unique_ptr<FormWindow> makeFormWindow(const FormWindowOptions& options,
                                           std::shared_ptr<Form> form) {
  return std::make_unique<QtFormWindow>(
      options, [form = std::move(form), heightPt = options.contentHeightPt] {
        return new Content(form, heightPt);
      });
}

}  // namespace

/// No loop runs any more that would delete the windows closed last.
QtFormWindows::~QtFormWindows() {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

std::unique_ptr<FormWindow> QtFormWindows::makeWindow(const FormWindowOptions& options,
                                                      std::shared_ptr<SettingsView> form) {
  colors_.follow();
  return makeFormWindow<SettingsForm>(options, std::move(form));
}

std::unique_ptr<FormWindow> QtFormWindows::makeWindow(const FormWindowOptions& options,
                                                      std::shared_ptr<ModelDownloadView> form) {
  colors_.follow();
  return makeFormWindow<DownloadForm>(options, std::move(form));
}

}  // namespace voxtrel
