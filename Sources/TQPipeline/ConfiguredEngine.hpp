#pragma once

#include "TQCore/Models/Job.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"

namespace tq {

// What the settings say about the model that is going to be asked.

/// What a job that starts now is run with.
EngineSnapshot currentEngineSnapshot(const AppSettings& settings);

/// False when the configured provider needs a key and there is none that can be read: then a user is to be asked for
/// one before anything else. An unknown provider counts as "anthropic".
bool isProviderReady(const AppSettings& settings, const SecretsStore& secrets);

}  // namespace tq
