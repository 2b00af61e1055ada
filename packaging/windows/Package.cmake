# A zip that runs from the unpacked folder, and an installer.
set(CPACK_GENERATOR ZIP)
