/// The other engines that rows are measured against: those whose libraries the build has.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RowEngine.h"

struct RowPeer {
  const char* writing;  ///< names what it does; null: only reads what the one before it has stored
  const char* reading;  ///< likewise; null: only writes
  std::unique_ptr<RowEngine> engine;
};

[[nodiscard]] std::vector<RowPeer> makeRowPeers(const std::string& directory);
