@echo off
rem Starts the server. Creates an empty database in the user's data folder first if there is none.
if not exist "%APPDATA%\serverdb.rsd" copy "%~dp0empty-database.rsd" "%APPDATA%\serverdb.rsd" >nul
start "" "%~dp0corvane-server.exe"
