; The installer for Windows: the plug-in where hosts look for it, all else in a folder of its own. It also upgrades and
; repairs what an earlier one has installed. installer.cmake calls makensis with these definitions:
;   VENDOR, PRODUCT, VERSION   as in utils/product.h
;   TREE                       what the .zip contains
;   LIST                       every file and folder of it, a folder after what it contains
;   RESULT                     the program to be made
;
; Switches: /AllUsers, /CurrentUser, /PluginFolder=FOLDER, /S (silent). The exit code is one of these.
!define DONE 0
!define CANCELLED 1  ; by the user
!define FAILED 2     ; a file could not be written
!define IN_USE 3     ; nothing was changed
!define FORBIDDEN 4  ; for all users, by a user who may not; nothing was changed

Target amd64-unicode
SetCompressor zlib ; the largest files are pictures, which are compressed already
SetDateSave off ; equal sources give equal installers
AllowSkipFiles off
ManifestDPIAware true
ManifestSupportedOS all

!define LIBRARY "KAVSorrelLimiter.dll"
!define GUIDE "${PRODUCT} User Guide.pdf"
!define INSTALLED "installed-files.txt"
!define EARLIER "earlier-files.txt"
!define UNINSTALLER "Uninstall.exe"
!define STAGED "new"
!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PRODUCT}"

; An administrator chooses between all users and one; anyone else installs without being asked for a password.
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_USE_PROGRAMFILES64
!define MULTIUSER_INSTALLMODE_INSTDIR "${VENDOR}\${PRODUCT}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_FUNCTION FindPluginFolders
!define MULTIUSER_NOUNINSTALL ; it serves the users for whom it was installed
!include MultiUser.nsh
!include MUI2.nsh
!include TextFunc.nsh
!include WordFunc.nsh

Name "${PRODUCT}"
Caption "${PRODUCT} ${VERSION} Setup"
BrandingText "${PRODUCT} ${VERSION}"
OutFile "${RESULT}"
VIProductVersion "${VERSION}"
VIFileVersion "${VERSION}"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "${PRODUCT} Setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "CompanyName" "${VENDOR}"
VIAddVersionKey "LegalCopyright" "${VENDOR}"

Var PluginFolder       ; where the plug-in goes
Var UsualPluginFolder  ; where it goes unless the user wants it elsewhere
Var OldPluginFolder    ; where an earlier installer has put it; empty without one
Var NewFolder          ; the plug-in folder if it is created now
Var MadeFolder         ; the plug-in folder that an installer has created; empty if it was there before
Var HostNote           ; what the user has to do in the host

!define MUI_ICON "${__FILEDIR__}/installer.ico"
!define MUI_UNICON "${__FILEDIR__}/installer.ico"
!define MUI_HEADERIMAGE
!define MUI_HEADERIMAGE_RIGHT
!define MUI_HEADERIMAGE_BITMAP "${__FILEDIR__}/header.bmp"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${__FILEDIR__}/side.bmp"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_NOAUTOCLOSE

!define MUI_WELCOMEPAGE_TITLE "Install ${PRODUCT}"
!define MUI_WELCOMEPAGE_TEXT "This installs the limiter for hosts that load 64-bit VST 2 plug-ins, the command-line \
    program kavhost, the factory patches and the user guide.$\r$\n$\r$\nPlease close your host \
    first.$\r$\n$\r$\n$_CLICK"
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${TREE}/LICENSE"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!define MUI_PAGE_HEADER_TEXT "Plug-in Folder"
!define MUI_PAGE_HEADER_SUBTEXT "Choose the folder where your host looks for VST 2 plug-ins."
!define MUI_DIRECTORYPAGE_TEXT_TOP "The plug-in and its guide go into the folder below. \
    $HostNote$\r$\n$\r$\nAll else goes into $INSTDIR."
!define MUI_DIRECTORYPAGE_TEXT_DESTINATION "Plug-in folder"
!define MUI_DIRECTORYPAGE_VARIABLE $PluginFolder
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_NOREBOOTSUPPORT
!define MUI_FINISHPAGE_TITLE "${PRODUCT} is installed"
!define MUI_FINISHPAGE_TEXT "The plug-in is in $PluginFolder.$\r$\n$\r$\n$HostNote \
    Then let the host scan for plug-ins."
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Open the user guide"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION OpenGuide
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; Functions that the installer and the uninstaller share. They leave $R0 to $R4 changed.
!macro SHARED un

; Calls the function $R2 with each line of the list $R1 in $R0.
Function ${un}ForEach
    ClearErrors
    FileOpen $R3 $R1 r
    ${IfNot} ${Errors}
        ${Do}
            FileRead $R3 $R0
            ${If} ${Errors}
                ${Break}
            ${EndIf}
            ${TrimNewLines} $R0 $R0
            Call $R2
            ClearErrors ; they are the function's own
        ${Loop}
        FileClose $R3
    ${EndIf}
FunctionEnd

; Lets the user close what has $R4 open, a loaded library included. If that isn't done, nothing has been changed yet.
Function ${un}AwaitFile
    ${DoWhile} ${FileExists} "$R4"
        ${If} ${FileExists} "$R4\*.*"
            ${Break} ; a folder
        ${EndIf}
        ; To be written and deleted, by no one else at the same time; only if it exists.
        System::Call 'kernel32::CreateFile(t R4, i 0xC0010000, i 0, p 0, i 3, i 0, p 0) p .r0'
        ${If} $0 P<> -1
            System::Call 'kernel32::CloseHandle(p r0)'
            ${Break}
        ${EndIf}
        SetDetailsPrint both
        MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$R4$\r$\n$\r$\nis in use. Close your host and what else \
            may use it, then try again." /SD IDCANCEL IDRETRY retry
        SetErrorLevel ${IN_USE}
        Abort "Nothing was changed: $R4 is in use."
        retry:
        SetDetailsPrint none
    ${Loop}
FunctionEnd

Function ${un}AwaitOwnFile
    StrCpy $R4 "$INSTDIR\$R0"
    Call ${un}AwaitFile
FunctionEnd

Function ${un}RemoveOwnFile
    Delete "$INSTDIR\$R0"
    RMDir "$INSTDIR\$R0"
FunctionEnd

; The plug-in in the folder $R0; it is empty if no earlier installer has named one.
Function ${un}AwaitPlugin
    ${If} $R0 != ""
        StrCpy $R4 "$R0\${LIBRARY}"
        Call ${un}AwaitFile
        StrCpy $R4 "$R0\${GUIDE}"
        Call ${un}AwaitFile
    ${EndIf}
FunctionEnd

Function ${un}RemovePlugin
    ${If} $R0 != ""
        Delete "$R0\${LIBRARY}"
        Delete "$R0\${GUIDE}"
        RMDir $MadeFolder
    ${EndIf}
FunctionEnd

; Ends the program if it may not serve all users.
Function ${un}RequireAdministrator
    UserInfo::GetAccountType
    Pop $R0
    ${If} $R0 != "Admin"
        MessageBox MB_OK|MB_ICONSTOP "This needs an administrator: it is for all users of this computer." /SD IDOK
        SetErrorLevel ${FORBIDDEN}
        Quit
    ${EndIf}
FunctionEnd

; Removes the product's folder and the vendor's, each if it is empty.
Function ${un}RemoveFolders
    SetOutPath $TEMP ; a current folder can't be removed
    RMDir $INSTDIR
    ${GetParent} "$INSTDIR" $R0
    RMDir $R0
FunctionEnd
!macroend
!insertmacro SHARED ""
!insertmacro SHARED "un."

!macro ForEach un FILES FUNCTION
    StrCpy $R1 "${FILES}"
    GetFunctionAddress $R2 ${un}${FUNCTION}
    Call ${un}ForEach
!macroend

Function .onInit
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/AllUsers" $R1
    ${IfNot} ${Errors}
        Call RequireAdministrator
    ${EndIf}
    !insertmacro MULTIUSER_INIT
FunctionEnd

; Called whenever it has been decided for whom to install.
Function FindPluginFolders
    ReadRegStr $OldPluginFolder SHCTX "${KEY}" "PluginFolder"
    ReadRegStr $MadeFolder SHCTX "${KEY}" "MadeFolder"
    ${If} $MultiUser.InstallMode == "AllUsers"
        StrCpy $HostNote "If your host doesn't look there, add the folder to the VST 2 folders in its settings."
        StrCpy $UsualPluginFolder "$PROGRAMFILES64\VSTPlugins"
        ReadRegStr $R0 HKLM "Software\VST" "VSTPluginsPath"
        ${WordFind} "$R0" ";" "+1" $R0 ; some hosts store several folders
        ExpandEnvStrings $R0 $R0
        StrCpy $R1 $R0 1 -1
        ${If} $R1 == "\"
            StrCpy $R0 $R0 -1
        ${EndIf}
        StrCpy $R1 $R0 1 1
        ${If} $R1 == ":" ; anything else would not be an absolute path
            StrCpy $UsualPluginFolder $R0
        ${EndIf}
    ${Else}
        StrCpy $HostNote "Add the folder to the VST 2 folders in your host's settings."
        StrCpy $UsualPluginFolder "$LOCALAPPDATA\Programs\VSTPlugins"
    ${EndIf}
    ReadRegStr $PluginFolder SHCTX "${KEY}" "ChosenPluginFolder"
    ${GetParameters} $R0
    ClearErrors
    ${GetOptions} $R0 "/PluginFolder=" $R1
    ${IfNot} ${Errors}
        StrCpy $PluginFolder $R1
    ${EndIf}
    ${If} $PluginFolder == ""
        StrCpy $PluginFolder $UsualPluginFolder
    ${EndIf}
FunctionEnd

; Everything that is about to be replaced or removed.
Function AwaitAll
    !insertmacro ForEach "" "$PLUGINSDIR\${EARLIER}" AwaitOwnFile
    !insertmacro ForEach "" "$PLUGINSDIR\${INSTALLED}" AwaitOwnFile
    StrCpy $R0 $OldPluginFolder
    Call AwaitPlugin
    StrCpy $R0 $PluginFolder
    Call AwaitPlugin
FunctionEnd

; Moves a file from the folder of unpacked ones to its place.
Function PlaceOwnFile
    ${IfNot} ${FileExists} "$INSTDIR\${STAGED}\$R0\*.*"
        ${GetParent} "$INSTDIR\$R0" $R4
        CreateDirectory $R4
        StrCpy $R4 "$INSTDIR\$R0"
        Rename "$INSTDIR\${STAGED}\$R0" $R4
        Call RequirePlaced
    ${EndIf}
FunctionEnd

Function PlacePluginFile
    StrCpy $R4 "$PluginFolder\$R0"
    ${If} ${FileExists} "$R4.${STAGED}" ; packages may be made without the guide
        Rename "$R4.${STAGED}" $R4
        Call RequirePlaced
    ${EndIf}
FunctionEnd

Function RequirePlaced
    ${If} ${Errors}
        SetDetailsPrint both
        SetErrorLevel ${FAILED}
        Abort "$R4 can't be written. Please install again."
    ${EndIf}
FunctionEnd

; Nothing is changed before all is unpacked, next to where it belongs, and none of the old files is in use.
Section "Install" INSTALL
    SetDetailsPrint none ; not every file
    InitPluginsDir
    SetOutPath $PLUGINSDIR
    File "${LIST}"
    CopyFiles /SILENT "$INSTDIR\${INSTALLED}" "$PLUGINSDIR\${EARLIER}" ; a list that is being read is itself in use
    Call AwaitAll

    SetOutPath "$INSTDIR\${STAGED}"
    File /r "${TREE}/*"
    File "${LIST}"
    StrCpy $NewFolder ""
    ${IfNot} ${FileExists} "$PluginFolder\*.*"
        StrCpy $NewFolder $PluginFolder
    ${EndIf}
    SetOutPath $PluginFolder
    File "/oname=${LIBRARY}.${STAGED}" "${TREE}/${LIBRARY}"
    File /nonfatal "/oname=${GUIDE}.${STAGED}" "${TREE}/${GUIDE}"
    Call AwaitAll ; a host may have been started meanwhile

    !insertmacro ForEach "" "$PLUGINSDIR\${EARLIER}" RemoveOwnFile
    !insertmacro ForEach "" "$PLUGINSDIR\${INSTALLED}" RemoveOwnFile ; of a .zip that was unpacked there
    StrCpy $R0 $OldPluginFolder
    Call RemovePlugin
    StrCpy $R0 $PluginFolder
    Call RemovePlugin
    ${If} $NewFolder != ""
        StrCpy $MadeFolder $NewFolder
    ${EndIf}
    !insertmacro ForEach "" "$PLUGINSDIR\${INSTALLED}" PlaceOwnFile
    StrCpy $R0 "${LIBRARY}"
    Call PlacePluginFile
    StrCpy $R0 "${GUIDE}"
    Call PlacePluginFile
    Call RemoveStaged
    SetDetailsPrint both
    DetailPrint "Plug-in: $PluginFolder"
    DetailPrint "Program and documents: $INSTDIR"

    WriteUninstaller "$INSTDIR\${UNINSTALLER}"
    WriteRegStr SHCTX "${KEY}" "DisplayName" "${PRODUCT}"
    WriteRegStr SHCTX "${KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr SHCTX "${KEY}" "DisplayIcon" "$INSTDIR\${UNINSTALLER}"
    WriteRegStr SHCTX "${KEY}" "Publisher" "${VENDOR}"
    WriteRegStr SHCTX "${KEY}" "InstallLocation" $INSTDIR
    WriteRegStr SHCTX "${KEY}" "UninstallString" '"$INSTDIR\${UNINSTALLER}"'
    WriteRegStr SHCTX "${KEY}" "QuietUninstallString" '"$INSTDIR\${UNINSTALLER}" /S'
    WriteRegDWORD SHCTX "${KEY}" "NoModify" 1
    WriteRegDWORD SHCTX "${KEY}" "NoRepair" 1
    SectionGetSize ${INSTALL} $R0
    WriteRegDWORD SHCTX "${KEY}" "EstimatedSize" $R0
    WriteRegStr SHCTX "${KEY}" "PluginFolder" $PluginFolder
    WriteRegStr SHCTX "${KEY}" "MadeFolder" $MadeFolder
    DeleteRegValue SHCTX "${KEY}" "ChosenPluginFolder"
    ${If} $PluginFolder != $UsualPluginFolder
        WriteRegStr SHCTX "${KEY}" "ChosenPluginFolder" $PluginFolder
    ${EndIf}

    DetailPrint "Copying patches and routings to your documents"
    nsExec::Exec '"$INSTDIR\kavhost.exe" content install'
    Pop $R0
    ${If} $R0 != 0
        DetailPrint "The factory patches were not installed. To do it later: kavhost content install"
    ${EndIf}
    SetErrorLevel ${DONE}
SectionEnd

; What was unpacked and has not been placed.
Function RemoveStaged
    SetOutPath "$TEMP" ; a current folder can't be removed
    RMDir /r "$INSTDIR\${STAGED}"
    Delete "$PluginFolder\${LIBRARY}.${STAGED}"
    Delete "$PluginFolder\${GUIDE}.${STAGED}"
FunctionEnd

Function .onInstFailed
    Call RemoveStaged
    RMDir $NewFolder
    Call RemoveFolders
FunctionEnd

; The desktop opens it for the user who is logged in, not for the administrator who installs.
Function OpenGuide
    Exec '"$WINDIR\explorer.exe" "$INSTDIR\${GUIDE}"'
FunctionEnd

; Where it is installed says for whom that was done.
Function un.onInit
    ReadRegStr $R0 HKCU "${KEY}" "InstallLocation"
    ${If} $R0 != $INSTDIR
        Call un.RequireAdministrator
        SetShellVarContext all
    ${EndIf}
FunctionEnd

; Patches and settings that are the user's own stay: kavhost removes only what it has installed and is unchanged.
Section "Uninstall"
    SetDetailsPrint none ; not every file
    InitPluginsDir
    SetOutPath $PLUGINSDIR
    File "${LIST}"
    ReadRegStr $R0 SHCTX "${KEY}" "PluginFolder"
    ReadRegStr $MadeFolder SHCTX "${KEY}" "MadeFolder"
    StrCpy $OldPluginFolder $R0
    !insertmacro ForEach un. "$PLUGINSDIR\${INSTALLED}" AwaitOwnFile
    StrCpy $R0 $OldPluginFolder
    Call un.AwaitPlugin

    nsExec::Exec '"$INSTDIR\kavhost.exe" content uninstall'
    Pop $R0
    !insertmacro ForEach un. "$PLUGINSDIR\${INSTALLED}" RemoveOwnFile
    StrCpy $R0 $OldPluginFolder
    Call un.RemovePlugin
    Delete "$INSTDIR\${UNINSTALLER}"
    DeleteRegKey SHCTX "${KEY}"
    Call un.RemoveFolders
    SetDetailsPrint both
    DetailPrint "Your own and changed patches and your settings were left as they are."
SectionEnd
