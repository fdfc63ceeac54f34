#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

/// The one place that knows where this program's private files live: in the folder "tarquel" of a base folder.
class AppSupportPaths {
 public:
  static constexpr std::string_view bundleId = "com.tarquel.app";

  explicit AppSupportPaths(std::filesystem::path base) : base_(std::move(base)) {}

  /// The base folder of a user: `dataHome` if it is an absolute path, else ".local/share" in the home folder (XDG Base
  /// Directory Specification).
  static std::filesystem::path baseFolder(const std::optional<std::string>& dataHome,
                                          const std::filesystem::path& home);

  /// The paths of the current user, as the environment tells.
  static AppSupportPaths ofUser();

  /// The private folder. Each access creates it where it is missing, with mode 0700, and takes over what an older
  /// version left in "Tarquel" beside it. Never fails: a store that then cannot write there reports it.
  std::filesystem::path appSupportDirectory() const;

  // All of these go through `appSupportDirectory`.
  std::filesystem::path settingsURL() const { return appSupportDirectory() / "settings.json"; }
  std::filesystem::path queueURL() const { return appSupportDirectory() / "queue.json"; }
  std::filesystem::path uiStateURL() const { return appSupportDirectory() / "ui-state.json"; }
  std::filesystem::path windowLayoutURL() const { return appSupportDirectory() / "window-layout.json"; }
  std::filesystem::path secretsURL() const { return appSupportDirectory() / "secrets.json"; }
  std::filesystem::path semanticIndexDirectory() const { return appSupportDirectory() / "semantic-index"; }

  /// Removes what dead runs left half written in the private folder and in the semantic index: for the start of a
  /// program, as a call lists both folders. Never fails.
  void removeAbandonedTemporaries() const noexcept;

  /// Moves the direct children of `legacy` into `current`, except those whose name is taken there, and removes `legacy`
  /// once it is empty. Nothing is merged or overwritten; what cannot be moved stays for the next time. Does nothing
  /// when both are one folder, as on a file system that does not tell capitals from small letters. Never fails.
  static void migrateLegacyDirectory(const std::filesystem::path& legacy,
                                     const std::filesystem::path& current) noexcept;

 private:
  std::filesystem::path base_;
};

}  // namespace tq
