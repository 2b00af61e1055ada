# A zip that runs from the unpacked folder, and an installer for all users of the machine.
set(CPACK_GENERATOR "ZIP;NSIS")
set(CPACK_SYSTEM_NAME "windows-x64")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "Varnholt Server")
set(CPACK_NSIS_PACKAGE_NAME "Varnholt Server")
set(CPACK_NSIS_DISPLAY_NAME "Varnholt Server")
set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
# A 64-bit installer: it runs where the server runs, without the 32-bit subsystem.
set(CPACK_NSIS_DEFINES "Target amd64-unicode")
set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
set(CPACK_NSIS_MANIFEST_DPI_AWARE ON)
# The uninstaller removes the installed files; the documents are in the user's folder and stay. The firewall admits
# connections to any port of the program: to the configured ports for browsers, and to those of TCP servers for devices.
# The only file here that the service (S-1-5-19, LocalService) may write contains the WebSocket port for browsers.
set(CPACK_NSIS_EXTRA_INSTALL_COMMANDS [[
  FileOpen $0 '$INSTDIR\\dist\\settings.json' a
  FileClose $0
  nsExec::ExecToLog 'icacls \"$INSTDIR\\dist\\settings.json\" /grant *S-1-5-19:M'
  nsExec::ExecToLog 'netsh advfirewall firewall add rule name=\"Varnholt Server\" dir=in action=allow protocol=TCP program=\"$INSTDIR\\ServerHost.exe\"'
  MessageBox MB_YESNO|MB_ICONQUESTION 'Run the server as a service that starts with the machine?' /SD IDNO IDNO +2
  nsExec::ExecToLog '\"$INSTDIR\\ServerHost.exe\" --service install'
]])
set(CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS [[
  nsExec::ExecToLog '\"$INSTDIR\\ServerHost.exe\" --service remove'
  nsExec::ExecToLog 'netsh advfirewall firewall delete rule name=\"Varnholt Server\"'
  Delete '$INSTDIR\\dist\\settings.json'
]])
set(CPACK_NSIS_CREATE_ICONS_EXTRA [[
  CreateShortCut '$SMPROGRAMS\\$STARTMENU_FOLDER\\Varnholt Server.lnk' '$INSTDIR\\ServerHost.exe'
]])
set(CPACK_NSIS_DELETE_ICONS_EXTRA [[
  Delete '$SMPROGRAMS\\$START_MENU\\Varnholt Server.lnk'
]])
