// Only there so that the precompiled headers have a target to be compiled for.
