// Decodes one H.245 message. The program must be a 32-bit one:
//
//   csc /platform:x86 Dump.cs
using System;
using System.Runtime.InteropServices;

static class Dump
{
    [DllImport("Tamsel.dll", EntryPoint = "_H323H245ASNDecode@16", ExactSpelling = true,
        CallingConvention = CallingConvention.StdCall, CharSet = CharSet.Ansi)]
    static extern int H323H245ASNDecode(byte[] data, ushort length, int aligned, string outputPath);

    static int Main()
    {
        byte[] message = { 0x01, 0x00, 0x00, 0x80, 0x92, 0x4F, 0xD5 };
        if (H323H245ASNDecode(message, (ushort)message.Length, 1, "message.txt") == 0)
        {
            Console.Error.WriteLine("not an H.245 message, or message.txt cannot be written");
            return 1;
        }
        Console.Error.WriteLine("message.txt is written");
        return 0;
    }
}
