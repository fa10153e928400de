// Decodes one H.245 message. Delphi: dcc32 Dump.dpr    Free Pascal: fpc -Mdelphi Dump.dpr
program Dump;

{$APPTYPE CONSOLE}

function H323H245ASNDecode(Data: PByte; Length: Word; Aligned: Integer;
  OutputPath: PAnsiChar): Integer; stdcall;
  external 'Tamsel.dll' name '_H323H245ASNDecode@16';

const
  Message: array[0..6] of Byte = ($01, $00, $00, $80, $92, $4F, $D5);

begin
  if H323H245ASNDecode(@Message[0], SizeOf(Message), 1, 'message.txt') = 0 then
  begin
    WriteLn(ErrOutput, 'not an H.245 message, or message.txt cannot be written');
    Halt(1);
  end;
  WriteLn(ErrOutput, 'message.txt is written');
end.
