// Only carries the precompiled header.
