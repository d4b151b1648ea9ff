#pragma once

namespace vandrel::bench {

/// The most memory that this process has had resident, in kilobytes; 0 where the system does not tell.
long mostResidentKilobytes();

} // namespace vandrel::bench
