"""An X session manager for one client: prints its address for SESSION_MANAGER, and ends the session at a line on its
standard input the way desktops do: the client is asked to save itself, without talking to the person, and then to go."""

import ctypes
import select
import sys
from ctypes import CFUNCTYPE, POINTER, Structure, c_char_p, c_int, c_long, c_ulong, c_void_p

SAVE_LOCAL, SAVE_BOTH, INTERACT_NONE = 1, 2, 0
ice, sm = ctypes.CDLL("libICE.so.6"), ctypes.CDLL("libSM.so.6")
for function in (ice.IceAcceptConnection, ice.IceComposeNetworkIdList):
    function.restype = c_void_p


def reply(conn, _, previous):
    if previous:
        return 0
    sm.SmsRegisterClientReply(c_void_p(conn), b"1")
    # The manager begins with this for a new client.
    sm.SmsSaveYourself(c_void_p(conn), SAVE_LOCAL, 0, INTERACT_NONE, 0)
    return 1


is_ending = False


def done(conn, _, success):
    if is_ending:
        print("saved", flush=True)
        sm.SmsDie(c_void_p(conn))
    else:
        sm.SmsSaveComplete(c_void_p(conn))


def callback(*arguments, result=None, do=lambda *_: None):
    return CFUNCTYPE(result, c_void_p, c_void_p, *arguments)(do)


# In the order of the library's structure: register, interact request and done, save request, second phase and done, close,
# properties set, deleted and asked for.
CALLBACKS = (callback(c_void_p, result=c_int, do=reply),
             callback(c_int, do=lambda *_: print("wants to ask", flush=True)),
             callback(c_int), callback(c_int, c_int, c_int, c_int, c_int), callback(),
             callback(c_int, do=done),
             callback(c_int, c_void_p, do=lambda conn, *_: sm.SmsCleanUp(c_void_p(conn))),
             callback(c_int, c_void_p), callback(c_int, c_void_p), callback())


class Slot(Structure):
    _fields_ = [("callback", c_void_p), ("data", c_void_p)]


clients = []


@CFUNCTYPE(c_int, c_void_p, c_void_p, POINTER(c_ulong), POINTER(Slot), POINTER(c_char_p))
def new_client(conn, _, mask, slots, __):
    mask[0] = (1 << len(CALLBACKS)) - 1
    for slot, function in enumerate(CALLBACKS):
        slots[slot].callback = ctypes.cast(function, c_void_p).value
    clients.append(conn)
    return 1


anybody = CFUNCTYPE(c_int, c_char_p)(lambda _: 1)
nothing = CFUNCTYPE(None, c_void_p)(lambda _: None)
ice.IceSetIOErrorHandler(nothing)  # the library's own ends the program when a client goes
ice._IceTransNoListen(b"tcp")
reason = ctypes.create_string_buffer(256)
assert sm.SmsInitialize(b"test", b"1", new_client, None, anybody, 256, reason), reason.value
count, listeners = c_int(), POINTER(c_void_p)()
assert ice.IceListenForConnections(ctypes.byref(count), ctypes.byref(listeners), 256, reason), reason.value
listener = {ice.IceGetListenConnectionNumber(c_void_p(listeners[i])): listeners[i] for i in range(count.value)}
for one in listener.values():
    ice.IceSetHostBasedAuthProc(c_void_p(one), anybody)
print(ctypes.string_at(ice.IceComposeNetworkIdList(count, listeners)).decode(), flush=True)

connections = {}
while True:
    for ready in select.select([sys.stdin.fileno(), *listener, *connections], [], [])[0]:
        if ready in listener:
            status = c_int()
            connection = ice.IceAcceptConnection(c_void_p(listener[ready]), ctypes.byref(status))
            connections[ice.IceConnectionNumber(c_void_p(connection))] = connection
        elif ready in connections:
            if ice.IceProcessMessages(c_void_p(connections[ready]), None, None) != 0:
                del connections[ready]
        elif not sys.stdin.readline():
            sys.exit()
        else:
            is_ending = True
            for client in clients:
                sm.SmsSaveYourself(c_void_p(client), SAVE_BOTH, 1, INTERACT_NONE, 0)
