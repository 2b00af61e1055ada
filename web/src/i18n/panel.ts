/** Sentences of the panel, and those that both parts of the application say. */
import { translator } from "./language.svelte.ts";

export const panelEn = {
  connecting: "Connecting…",
  connected: "Connected",
  reconnecting: "Reconnecting…",
  refused: "Not connected. Nothing was sent.",
  fullScreen: "Full screen",
  leaveFullScreen: "Leave full screen",
  pages: "Pages",
  loading: "Reading the pages…",
  noPages: "There is no page yet.",
  layOut: "Lay out pages",
  newerLayout: "These pages were made with a newer version of this application. Update the server to show them.",
  foreignLayout: "The stored pages come from another program and can't be shown here.",
  confirm: "Send",
  cancel: "Cancel",
  close: "Close",
  sending: "Sending",
  done: "Done",
  failed: "Not sent",
  on: "On",
  off: "Off",
  noPage: "This page is gone.",
  "code-1": "The server does not answer. It may or may not have been sent.",
  "code-2": "Something else than the server answered.",
  code30100: "The server does not know this connection. Wait a moment and try again.",
  code30101: "The server refused the request. Its operation log says why.",
  code30200: "Serial port:",
  code30201: "Network:",
  code30202: "Network (UDP):",
  code30203: "No command is stored for this, or its interface was deleted.",
  codeOther: "The server answered with code {0}.",
  hint2: "There is no such serial port. Plug it in, or check its name.",
  hint5: "The serial port is in use by another program, or the server has no permission for it.",
  hint13: "The command can't be turned into bytes. Check its format and encoding.",
  hint87: "The port does not take these settings. Check speed, data bits, parity and stop bits.",
  hint121: "The serial line took the bytes too slowly or not at all. Check its speed.",
  hint995: "The interface was deleted while the command was sent.",
  hint1167: "The serial device was unplugged.",
  hint10013: "A route or a firewall of the server forbids it.",
  hint10040: "The command is too long for one datagram.",
  hint10048: "The local port is in use. Choose another one.",
  hint10049: "The address or port of the interface is wrong or missing.",
  hint10051: "There is no way to the device. Check cable, address and router.",
  hint10054: "The device ended the connection. It may serve only one client.",
  hint10057: "The device is not connected to the server.",
  hint10060: "The device does not answer. Is it switched on?",
  hint10061: "Nothing listens there. Check the port number and that the device's service is on.",
  hint11001: "The host name is unknown. Check the name.",
};

export const panelZh: Record<keyof typeof panelEn, string> = {
  connecting: "正在连接…",
  connected: "已连接",
  reconnecting: "正在重新连接…",
  refused: "未连接，未发送任何内容。",
  fullScreen: "全屏",
  leaveFullScreen: "退出全屏",
  pages: "页面",
  loading: "正在读取页面…",
  noPages: "还没有页面。",
  layOut: "制作页面",
  newerLayout: "这些页面由更新版本的应用制作。请更新服务器后再显示。",
  foreignLayout: "保存的页面来自其他程序，无法在此显示。",
  confirm: "发送",
  cancel: "取消",
  close: "关闭",
  sending: "正在发送",
  done: "完成",
  failed: "未发送",
  on: "开",
  off: "关",
  noPage: "此页面已不存在。",
  "code-1": "服务器没有应答，命令可能已发送，也可能未发送。",
  "code-2": "应答的不是本服务器。",
  code30100: "服务器不认识此连接，请稍候再试。",
  code30101: "服务器拒绝了请求，原因见其操作日志。",
  code30200: "串口：",
  code30201: "网络：",
  code30202: "网络（UDP）：",
  code30203: "此处没有保存命令，或其接口已被删除。",
  codeOther: "服务器返回代码 {0}。",
  hint2: "没有这个串口。请接上设备或检查名称。",
  hint5: "串口被其他程序占用，或服务器没有权限。",
  hint13: "命令无法转换为字节，请检查格式和编码。",
  hint87: "串口不接受这些设置，请检查波特率、数据位、校验和停止位。",
  hint121: "串口接收过慢或无响应，请检查波特率。",
  hint995: "发送过程中接口被删除。",
  hint1167: "串口设备已被拔出。",
  hint10013: "服务器的路由或防火墙不允许。",
  hint10040: "命令超过一个数据报的长度。",
  hint10048: "本地端口已被占用，请换一个。",
  hint10049: "接口的地址或端口错误或缺失。",
  hint10051: "无法到达设备，请检查网线、地址和路由。",
  hint10054: "设备断开了连接，它可能只服务一个客户端。",
  hint10057: "设备没有连接到服务器。",
  hint10060: "设备没有应答，是否已开机？",
  hint10061: "该端口无人监听，请检查端口号以及设备的服务是否开启。",
  hint11001: "主机名未知，请检查名称。",
};

export const tp = translator({ en: panelEn, zhCN: panelZh });

/** The numbers for which a network has no way: one hint serves all. */
const sameHint: Record<string, string> = { "10050": "10051", "10065": "10051" };

/** What a failed click means, in sentences: first what to do, then the server's own lines. */
export function failureText(code: number, text: string): { sentence: string; details: string } {
  const known = `code${code}`;
  const first = known in panelEn ? tp(known as keyof typeof panelEn) : tp("codeOther", code);
  const numbers = [...text.matchAll(/(?:reason:|原因:)(\d+)/g)].map((match) => sameHint[match[1]!] ?? match[1]!);
  const hints = [...new Set(numbers)].flatMap((number) =>
    `hint${number}` in panelEn ? [tp(`hint${number}` as keyof typeof panelEn)] : []);
  return { sentence: [first, ...hints].join(" "), details: text.trim() };
}
