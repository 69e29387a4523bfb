#include "voxtrel/platform/linux/windows/QtFormWindows.h"

#include <QCoreApplication>

#include "voxtrel/platform/linux/windows/DesktopColors.h"
#include "voxtrel/platform/linux/windows/DownloadForm.h"
#include "voxtrel/platform/linux/windows/QtFormWindow.h"
#include "voxtrel/platform/linux/windows/SettingsForm.h"

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
