"""The services that issue credentials, and a store that accepts nothing else, all in one server.

The first element of a URL's path selects the behaviour: "well" issues credentials for an hour, "short" for two seconds,
"once" the first time only, "refuse", "garbage" and "silent" never; the first of "revoke" are refused by the store. The store is below "store": its buckets contain an object
that is named after the access key of the request; the bucket "long" has ten pages that take their time.
"""

import collections
import datetime
import hashlib
import hmac
import http.server
import json
import re
import secrets
import threading
import time
import urllib.parse

KINDS = {"/": "token-service", "/federation/credentials": "sso", "/container": "container", "/process": "process", "/token": "sso-token",
         "/latest/api/token": "instance-token", "/latest/meta-data/iam/security-credentials/": "instance-role",
         "/latest/meta-data/iam/security-credentials/a%20role": "instance"}


def signature(request, body, secret, scope, names):
    """AWS Signature Version 4 of the request."""
    address = urllib.parse.urlsplit(request.path)
    headers = "".join(f"{name}:{request.headers[name].strip()}\n" for name in names)
    canonical = "\n".join([request.command, address.path, address.query, headers, ";".join(names), hashlib.sha256(body).hexdigest()])
    text = "\n".join(["AWS4-HMAC-SHA256", request.headers["x-amz-date"], "/".join(scope), hashlib.sha256(canonical.encode()).hexdigest()])
    key = ("AWS4" + secret).encode()
    for part in [*scope, text]:
        key = hmac.digest(key, part.encode(), "sha256")
    return key.hex()


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    log_message = lambda *_: None

    def do_GET(self):
        self.body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        address = urllib.parse.urlsplit(self.path)
        behaviour, _, path = address.path[1:].partition("/")
        query = dict(urllib.parse.parse_qsl(address.query))
        status, text = self.store(path, query) if behaviour == "store" else self.service(behaviour, "/" + path, query)
        if status:
            self.send_response(status)
            self.send_header("Content-Length", str(len(text)))
            self.end_headers()
            self.wfile.write(text.encode())

    do_POST = do_PUT = do_GET

    def signer(self, service):
        """The access key that the request is signed with; empty if it isn't signed, None if the signature is wrong."""
        if "Authorization" not in self.headers:
            return ""
        access, *scope, names, given = re.fullmatch(
            "AWS4-HMAC-SHA256 Credential=(.+)/([^/]+)/([^/]+)/([^/]+)/(aws4_request), *SignedHeaders=(.*), *Signature=(.*)",
            self.headers["Authorization"]).groups()
        secret, token, _ = self.server.issued[access]
        right = signature(self, self.body, secret, scope, names.split(";")) == given and scope[2] == service
        return access if right and self.headers.get("x-amz-security-token", "") == token else None

    def store(self, bucket, query):
        access = self.signer("s3")
        if access is None:
            return 403, "<Error><Code>SignatureDoesNotMatch</Code></Error>"
        self.server.signers.append(access)
        if access and self.server.issued[access][2] < time.time():
            self.server.expired += 1
            return 400, "<Error><Code>ExpiredToken</Code></Error>"
        page = int(query.get("continuation-token", 0))
        more = bucket == "long" and page < 9
        if bucket == "long":
            time.sleep(0.4)
        rest = f"<IsTruncated>true</IsTruncated><NextContinuationToken>{page + 1}</NextContinuationToken>" if more else \
            "<IsTruncated>false</IsTruncated>"
        return 200, f"<ListBucketResult><Contents><Key>{page}-{access or 'nobody'}</Key></Contents>{rest}</ListBucketResult>"

    def service(self, behaviour, path, query):
        kind = KINDS[path]
        form = json.loads(self.body) if kind == "sso-token" else dict(urllib.parse.parse_qsl(self.body.decode()))
        if kind == "token-service":
            kind = form["Action"]
        self.server.requests[behaviour, kind] += 1
        count = self.server.requests[behaviour, kind]
        if behaviour == "silent":
            time.sleep(60)
            return None, ""
        if behaviour == "refuse" or (behaviour == "once" and count > 1) or not self.may(kind, form, query):
            return 403, f"<Error><Code>AccessDenied</Code><Message>not you, {self.secret_of(kind)}</Message></Error>"
        if behaviour == "garbage":
            return 200, f"{{ <\n{self.secret_of(kind)}>"
        if kind == "instance-token":
            return 200, "metadata-token"
        if kind == "sso-token":
            return 200, json.dumps({"accessToken": self.server.hidden[1], "expiresIn": 3600, "refreshToken": "next"})
        if kind == "instance-role":
            return 200, "a role\nanother"
        access = f"{kind}{count}"
        text = self.issue(access, kind, 2 if behaviour == "short" else 3600)
        if behaviour == "revoke" and count == 1:
            self.server.issued[access] = *self.server.issued[access][:2], 0
        return 200, text

    def may(self, kind, form, query):
        if kind == "AssumeRole":
            self.server.signers.append(self.signer("sts"))
            return self.server.signers[-1] and form["RoleArn"] == "arn:r" and form.get("ExternalId", "x+y &") == "x+y &"
        if kind == "AssumeRoleWithWebIdentity":
            return "Authorization" not in self.headers and form["WebIdentityToken"] == self.server.hidden[0]
        if kind == "sso-token":
            return form == {"grantType": "refresh_token", "clientId": "i", "clientSecret": "client-secret", "refreshToken": self.server.hidden[2]}
        if kind == "sso":
            return self.headers["x-amz-sso_bearer_token"] == self.server.hidden[1] and query == {"account_id": "1", "role_name": "r"}
        if kind == "container":
            return self.headers["Authorization"] == self.server.hidden[2]
        if kind == "instance-token":
            return self.command == "PUT" and self.headers["X-aws-ec2-metadata-token-ttl-seconds"]
        return kind == "process" or self.headers["X-aws-ec2-metadata-token"] == "metadata-token"

    def secret_of(self, kind):
        """What the client must not repeat when the service does."""
        own = {"AssumeRoleWithWebIdentity": 0, "sso": 1, "container": 2, "sso-token": 2}
        return self.server.hidden[own[kind]] if kind in own else self.server.issued["base"][0]

    def issue(self, access, kind, seconds):
        secret, token = secrets.token_urlsafe(30), secrets.token_urlsafe(30)
        end = int(time.time()) + seconds
        self.server.issued[access] = secret, token, end
        self.server.hidden += [secret, token]
        expiration = datetime.datetime.utcfromtimestamp(end).isoformat() + "Z"
        if kind == "sso":
            return json.dumps({"roleCredentials": {"accessKeyId": access, "secretAccessKey": secret, "sessionToken": token, "expiration": end * 1000}})
        if kind in ("container", "instance", "process"):
            return json.dumps({"Code": "Success", "Version": 1, "AccessKeyId": access, "SecretAccessKey": secret,
                               "SessionToken" if kind == "process" else "Token": token, "Expiration": expiration})
        return (f"<{kind}Response xmlns='urn:x'><{kind}Result><Credentials><AccessKeyId>{access}</AccessKeyId><SecretAccessKey>{secret}</SecretAccessKey>"
                f"<SessionToken>{token}</SessionToken><Expiration>{expiration}</Expiration></Credentials></{kind}Result></{kind}Response>")


class CredentialServices(http.server.ThreadingHTTPServer):
    """`hidden` are the texts that no message may contain, the first three of which are tokens that the services accept."""

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self.server_port}"
        self.hidden = [secrets.token_urlsafe(30) for _ in range(3)]
        self.issued = {}  # access key: secret, session token, expiration
        self.requests = collections.Counter()  # by behaviour and kind
        self.signers = []
        self.expired = 0
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def keys(self, access):
        """A permanent pair of keys."""
        secret = secrets.token_urlsafe(30)
        self.issued[access] = secret, "", float("inf")
        self.hidden.append(secret)
        return f"aws_access_key_id = {access}\naws_secret_access_key = {secret}\n"

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()
