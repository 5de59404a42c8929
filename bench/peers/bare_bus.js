// Takes the name com.vastel.Bare on the session bus and waits. The two calls that this needs are
// written by hand: Node has no library of its own for the bus.
const net = require("node:net");

const kBus = "org.freedesktop.DBus";
const aligned = (bytes, size) => Buffer.concat([bytes, Buffer.alloc(-bytes.length & (size - 1))]);

function word(number) {
  const bytes = Buffer.alloc(4);
  bytes.writeUInt32LE(number);
  return bytes;
}

function text(value) {
  return Buffer.concat([word(value.length), Buffer.from(value + "\0")]);
}

// A header field of type "s" or "o".
function field(code, type, value) {
  return aligned(Buffer.concat([Buffer.from([code, 1, type.charCodeAt(0), 0]), text(value)]), 8);
}

function call(serial, member, signature, body) {
  const fields = Buffer.concat([
    field(1, "o", "/org/freedesktop/DBus"),
    field(2, "s", kBus),
    field(3, "s", member),
    field(6, "s", kBus),
    Buffer.from([8, 1, 0x67, 0, signature.length, ...Buffer.from(signature), 0]),
  ]);
  const start = Buffer.concat([Buffer.from("l\x01\x00\x01"), word(body.length), word(serial)]);
  return Buffer.concat([aligned(Buffer.concat([start, word(fields.length), fields]), 8), body]);
}

const path = /path=([^,;]*)/.exec(process.env.DBUS_SESSION_BUS_ADDRESS)[1];
const user = Buffer.from(String(process.getuid())).toString("hex");
const bus = net.connect(path, () => bus.write(`\0AUTH EXTERNAL ${user}\r\n`));
bus.once("data", () => {
  bus.write("BEGIN\r\n");
  bus.write(call(1, "Hello", "", Buffer.alloc(0)));
  const name = Buffer.concat([aligned(text("com.vastel.Bare"), 4), word(0)]);
  bus.write(call(2, "RequestName", "su", name));
  bus.resume();
});
