#include "TQDescription/Export/LibraryExport.hpp"

#include <algorithm>

#include "TQDescription/Export/CSVMarkersExporter.hpp"
#include "TQDescription/Export/EDLExporter.hpp"
#include "TQDescription/Export/FCPXMLExporter.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

std::vector<ExportItem> LibraryExport::items(const std::vector<LoadedSidecar>& sidecars) {
  std::vector<ExportItem> items;
  for (const LoadedSidecar& sidecar : sidecars)
    if (auto clip = sidecar.sourceVideoURL())
      items.push_back(ExportItem::make(*std::move(clip), sidecar.result, false));
  return items;
}

std::size_t LibraryExport::rangeCount(const std::vector<ExportItem>& items) {
  std::size_t count = 0;
  for (const ExportItem& item : items)
    count += item.ranges.size();
  return count;
}

std::string LibraryExport::title(std::string_view query) {
  const std::string_view text = trimmed(query);
  return std::string(text.empty() ? "Tarquel Export" : text);
}

std::string LibraryExport::suggestedFilename(std::string_view query, TextExportFormat format) {
  const std::string_view text = trimmed(query);
  std::string name(text.empty() ? "export" : text);
  std::ranges::replace(name, ' ', '_');
  return name + "." + std::string(rawValue(format));
}

std::string LibraryExport::text(TextExportFormat format, const std::vector<ExportItem>& items, std::string_view query) {
  switch (format) {
    case TextExportFormat::fcpxml: return FCPXMLExporter::exportItems(items, title(query));
    case TextExportFormat::edl: return EDLExporter::exportItems(items, title(query));
    case TextExportFormat::csv: return CSVMarkersExporter::exportItems(items);
  }
  return {};
}

}  // namespace tq
