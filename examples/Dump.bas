Attribute VB_Name = "Dump"
' Decodes one H.245 message: a module for Visual Basic 6, or for VBA in a 32-bit Office.
' Tamsel.dll lies next to the program; for VBA write the full path of the DLL after Lib.
Option Explicit

Private Declare Function H323H245ASNDecode Lib "Tamsel.dll" Alias "_H323H245ASNDecode@16" _
    (ByRef Data As Byte, ByVal Length As Integer, ByVal Aligned As Long, _
     ByVal OutputPath As String) As Long

Public Sub Main()
    Dim Message(0 To 6) As Byte
    Message(0) = &H1
    Message(3) = &H80
    Message(4) = &H92
    Message(5) = &H4F
    Message(6) = &HD5
    ' Length has 16 bits: a count above 32767 is passed as the count less 65536.
    If H323H245ASNDecode(Message(0), 7, 1, "message.txt") = 0 Then
        MsgBox "not an H.245 message, or message.txt cannot be written"
    Else
        MsgBox "message.txt is written"
    End If
End Sub
