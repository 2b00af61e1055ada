import { expect, it } from "vitest";
import { errorNumbers } from "../../src/model/sendFailures.ts";

it.each([
  ["nothing failed", "", []],
  ["one command", "Projectorfailed to send PowerOn,reason:10061No connection could be made.\r\n", [10061]],
  ["one command, in Chinese", "投影机发送开机失败,原因:10061由于目标计算机积极拒绝，无法连接。\r\n", [10061]],
  [
    "several commands, one number twice",
    "Screenfailed to send S,reason:2No such file.\r\nAfailed to send ,reason:10061\r\nBfailed to send X,reason:2\r\n",
    [2, 10061],
  ],
  ["a name that looks like a reason", "Hall,reason:5failed to send Off,reason:13,reason:121The wait ended.", [121]],
  ["a reason of nothing that was sent", "reason:5", []],
  ["another server's words", "HTTP 502", []],
])("reads the error numbers of a click: %s", (_, message, numbers) => {
  expect(errorNumbers(message)).toEqual(numbers);
});
