#!/usr/bin/env escript
%% make.escript VARIANT MESSAGES FOLDER: encodes the messages of a file of terms with the codecs in the
%% current folder, as tests/crosscheck/run leaves them, and writes each to FOLDER/NAME-VARIANT.hex.
%% Octets that are a message themselves are written as {encoded, Module, Type, Value}.
main([Variant, Messages, Folder]) ->
    {ok, Terms} = file:consult(Messages),
    [write(filename:join(Folder, Name ++ "-" ++ Variant ++ ".hex"), encode(Module, Type, Value))
     || {Name, Module, Type, Value} <- Terms].

encode(Module, Type, Value) ->
    {ok, Octets} = Module:encode(Type, inner(Value)),
    Octets.

inner({encoded, Module, Type, Value}) -> encode(Module, Type, Value);
inner({Name, Value}) -> {Name, inner(Value)};
inner(Values) when is_list(Values) -> [inner(Value) || Value <- Values];
inner(Values) when is_map(Values) -> maps:map(fun(_, Value) -> inner(Value) end, Values);
inner(Value) -> Value.

write(File, Octets) ->
    ok = file:write_file(File, [[io_lib:format("~2.16.0b", [Octet]) || <<Octet>> <= Octets], "\n"]).
