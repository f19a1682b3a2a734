@echo off
rem Runs every test of this folder and writes summary.txt beside this file. It installs nothing.
"%~dp0bin\run_tests.exe" "%~dp0."
set result=%errorlevel%
rem A window of its own stays open; one that was called from a prompt or a script does not wait.
echo %cmdcmdline% | find /i "/c" >nul && if not defined CI pause
exit /b %result%
