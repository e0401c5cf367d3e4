#pragma once

#include <QJsonObject>

namespace korvo {

class UserDefaults;

namespace demo {

/// Fills a store with all that Korvo needs for a sample workspace: `workspace` is what `korvo-sandbox` prints when it
/// starts. Polls every `pollSeconds`.
void storeSettings(UserDefaults &defaults, const QJsonObject &workspace, double pollSeconds);

/// Leads this process's requests for the API's host to the sample workspace, over TLS with its own authority.
void redirectRequests(const QJsonObject &workspace);

} // namespace demo

} // namespace korvo
