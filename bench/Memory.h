#pragma once

namespace vandrel::bench {

/// The most memory that this process has had resident, in kilobytes; 0 where the system does not tell.
long mostResidentKilobytes();

/// Begins that count anew, with what is resident now; returns that in kilobytes.
long forgetMostResident();

} // namespace vandrel::bench
