#pragma once

/// Marks an operation that the audio thread calls: it neither allocates nor locks, waits, throws, logs or
/// calls the system. It expands to nothing; tests count allocations and locks while such operations run.
#define KAV_REALTIME
