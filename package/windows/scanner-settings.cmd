@echo off
rem Shows the settings of this user's scanner, or a first proposal for them. A scan reads with them by
rem   teskread scan --key "Software\TeskReader99\Scanner"
setlocal
set "key=Software\TeskReader99\Scanner"
set "first="
"%~dp0teskread.exe" settings show --key "%key%" >nul 2>&1
if errorlevel 1 set "first=--reader 15"
"%~dp0teskread.exe" setup --key "%key%" %first%
if errorlevel 1 pause
