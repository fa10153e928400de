#!/usr/bin/env escript
%% codec.escript VALUES RESULTS STEP: encodes each value of a file of terms {Module, Type, Value},
%% with the codecs in the current folder. Writes a line for each: the octets in hex; a 1 if they
%% decode, else a 0; and for each STEP-th value, for each number of octets below theirs, a 1 if so
%% many of them decode, else a 0. A value that is not encoded gives a line "-" and the reason.
main([Values, Results, Step]) ->
    {ok, Out} = file:open(Results, [write, raw, delayed_write]),
    {ok, In} = file:open(Values, [read, raw, read_ahead]),
    each(In, Out, 0, list_to_integer(Step)),
    ok = file:close(Out).

each(In, Out, Number, Step) ->
    case file:read_line(In) of
        {ok, Line} ->
            {ok, Tokens, _} = erl_scan:string(Line),
            {ok, {Module, Type, Value}} = erl_parse:parse_term(Tokens),
            ok = file:write(Out, [result(Module, Type, Value, Number rem Step), "\n"]),
            each(In, Out, Number + 1, Step);
        eof ->
            ok
    end.

result(Module, Type, Value, Rest) ->
    case Module:encode(Type, Value) of
        {ok, Octets} ->
            [hex(Octets), " ", decodes(Module, Type, Octets), " ", cuts(Module, Type, Octets, Rest)];
        {error, Reason} ->
            io_lib:format("- ~w", [Reason])
    end.

cuts(Module, Type, Octets, 0) ->
    [decodes(Module, Type, binary:part(Octets, 0, N)) || N <- lists:seq(0, byte_size(Octets) - 1)];
cuts(_, _, _, _) ->
    [].

decodes(Module, Type, Octets) ->
    case Module:decode(Type, Octets) of
        {ok, _} -> $1;
        {error, _} -> $0
    end.

hex(Octets) ->
    [io_lib:format("~2.16.0b", [Octet]) || <<Octet>> <= Octets].
